#pragma once
// Whole seconds since the user's last keyboard or mouse input, as the Idle
// Timeout trigger needs it. The desktop layer supplies the real source; the
// default answers 0 (no display, or not known).

class IdleTimeSource {
public:
    virtual ~IdleTimeSource() = default;
    // May be called from checker threads; 0 when the query fails.
    virtual long IdleSeconds() = 0;
    // False when this session cannot tell idle time at all (no display):
    // Idle Timeout triggers then say so instead of waiting for ever.
    virtual bool IsAvailable() const { return true; }
};

class NoIdleTime final : public IdleTimeSource {
public:
    long IdleSeconds() override { return 0; }
    bool IsAvailable() const override { return false; }
};
