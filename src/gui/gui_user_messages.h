#pragma once
// Message boxes for texts that the core and worker threads hand over: shown
// on the main thread, never from the thread that asked.

#include "core/user_messages.h"

class GuiUserMessages final : public UserMessages {
public:
    void ShowMessage(const wxString& text, const wxString& caption) override;
};
