#include "core/cron/cron_messages.h"

namespace cron {

namespace {
MessageTranslator g_translator = nullptr;
}  // namespace

void SetMessageTranslator(MessageTranslator translator)
{
    g_translator = translator;
}

std::string TranslateMessage(const char* english)
{
    return g_translator ? g_translator(english) : std::string(english);
}

std::string FormatMessage(const char* english, const std::string& arg)
{
    std::string text = TranslateMessage(english);
    const std::size_t at = text.find("%s");
    if (at != std::string::npos)
        text.replace(at, 2, arg);
    return text;
}

}  // namespace cron
