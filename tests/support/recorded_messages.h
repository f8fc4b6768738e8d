#pragma once
// Records what jobs tell the user (message boxes, notices, reminders) so a
// test can assert on the exact texts. Installed for the life of the object;
// thread-safe, because jobs report from their own threads.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "core/user_messages.h"

struct RecordedMessage {
    enum class Kind { Box, Notice, Reminder };
    Kind kind;
    std::string text;     // UTF-8
    std::string caption;  // message boxes only
    std::uint32_t jobId = 0;
    bool important = false;
};

class RecordedMessages final : public UserMessages {
public:
    RecordedMessages();
    ~RecordedMessages() override;
    RecordedMessages(const RecordedMessages&) = delete;
    RecordedMessages& operator=(const RecordedMessages&) = delete;

    void ShowMessage(const wxString& text, const wxString& caption) override;
    void ShowNotice(std::uint32_t jobId, const wxString& text) override;
    void ShowReminder(std::uint32_t jobId, const wxString& text, bool important) override;

    std::vector<RecordedMessage> All() const;
    // Texts of one kind, in the order they came.
    std::vector<std::string> Texts(RecordedMessage::Kind kind) const;
    // Waits until at least `count` messages came, or the time-out passed.
    bool WaitForCount(std::size_t count, std::chrono::milliseconds timeout) const;

private:
    void Add(RecordedMessage message);

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    std::vector<RecordedMessage> m_messages;
};
