#pragma once
// The cron library is plain C++ without a catalogue of its own; its messages
// are English texts that the program translates where it shows them.
// Whoever has a catalogue installs a translator; until then texts pass
// through unchanged. Texts to translate are marked by being passed to
// TranslateMessage or FormatMessage literally, or to bad_cronexpr.

#include <string>

namespace cron {

using MessageTranslator = std::string (*)(const char* english);

// Installed once at start-up, before any thread asks.
void SetMessageTranslator(MessageTranslator translator);

// `english` in the user's language (UTF-8).
std::string TranslateMessage(const char* english);

// TranslateMessage, then the first "%s" replaced by `arg`.
std::string FormatMessage(const char* english, const std::string& arg);

}  // namespace cron
