#include "recorded_messages.h"

RecordedMessages::RecordedMessages()
{
    SetUserMessages(this);
}

RecordedMessages::~RecordedMessages()
{
    SetUserMessages(nullptr);
}

void RecordedMessages::ShowMessage(const wxString& text, const wxString& caption)
{
    Add({RecordedMessage::Kind::Box, text.utf8_string(), caption.utf8_string(), 0, false});
}

void RecordedMessages::ShowNotice(std::uint32_t jobId, const wxString& text)
{
    Add({RecordedMessage::Kind::Notice, text.utf8_string(), {}, jobId, false});
}

void RecordedMessages::ShowReminder(std::uint32_t jobId, const wxString& text, bool important)
{
    Add({RecordedMessage::Kind::Reminder, text.utf8_string(), {}, jobId, important});
}

void RecordedMessages::Add(RecordedMessage message)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_messages.push_back(std::move(message));
    }
    m_changed.notify_all();
}

std::vector<RecordedMessage> RecordedMessages::All() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_messages;
}

std::vector<std::string> RecordedMessages::Texts(RecordedMessage::Kind kind) const
{
    std::vector<std::string> texts;
    for (const RecordedMessage& message : All())
        if (message.kind == kind)
            texts.push_back(message.text);
    return texts;
}

bool RecordedMessages::WaitForCount(std::size_t count, std::chrono::milliseconds timeout) const
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, timeout, [&] { return m_messages.size() >= count; });
}
