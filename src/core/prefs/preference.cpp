#include "core/prefs/preference.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <system_error>

#include <wx/fileconf.h>
#include <wx/filename.h>
#include <wx/log.h>
#include <wx/mstream.h>
#include <wx/utils.h>

#include "core/clock.h"
#include "core/core_log.h"
#include "core/data/atomic_file.h"
#include "core/data/data_file_paths.h"
#include "core/prefs/password_hash.h"
#include "core/prefs/vtx_codec.h"

const std::vector<std::pair<const char*, const char*>>& Preference::Defaults()
{
    static const std::vector<std::pair<const char*, const char*>> table = {
        {"minimizeOnOpenJob", "0"},      {"execMissFiredTrigger", "0"},    {"hideNotifyWnd", "0"},
        {"preserveMainFrmSize", "1"},    {"hideMainFrmClickCloseBtn", "0"}, {"usePassword", "0"},
        {"password", ""},                {"minimizeOnAppStart", "0"},      {"hideTrayIcon", "0"},
        {"hotkeyRestoreMainFrm2", "4"},  {"hotkeyRestoreMainFrm3", "48"},  {"hotkeyPauseMode2", "4"},
        {"hotkeyPauseMode3", "57"},      {"hotkeyCust12", "4"},            {"hotkeyCust13", "56"},
        {"hotkeyAssociatedJID1", "0"},   {"hotkeyCust22", "4"},            {"hotkeyCust23", "55"},
        {"hotkeyAssociatedJID2", "1"},   {"hotkeyCust32", "4"},            {"hotkeyCust33", "54"},
        {"hotkeyAssociatedJID3", "2"},   {"mainFrmX", "16"},               {"mainFrmY", "16"},
        {"mainFrmW", "1024"},            {"mainFrmH", "512"},              {"jColWidthJID", "50"},
        {"jColWidthType", "100"},        {"jColWidthDesc", "100"},         {"jColWidthInfo", "150"},
        {"jColWidthRJID", "80"},         {"jColWidthNextTime", "150"},     {"jColWidthTID", "70"},
        {"tColWidthTID", "50"},          {"tColWidthJID", "50"},          {"tColWidthType", "100"},         {"tColWidthStatus", "80"},
        {"tColWidthPrevTime", "150"},    {"tColWidthNextTime", "150"},     {"tColWidthStartTime", "150"},
        {"tColWidthEndTime", "150"},     {"tColWidthCondition", "80"},     {"colSortIndex", "0"},
        {"colSortDir", "4096"},
        // The run history: how long and how many runs it keeps, and whether
        // a failure becomes a desktop notification.
        {"historyKeepDays", "90"},       {"historyMaxRuns", "200000"},     {"historyNotifyFailures", "1"},
    };
    return table;
}

Preference::Preference(wxConfigBase* config, const Clock& clock) : m_pConfig(config), m_clock(clock)
{
    m_values.reserve(101);  // the first prime from 100
    for (const auto& entry : Defaults())
        m_values.emplace(entry.first, entry.second);
}

Preference::~Preference() = default;

wxString Preference::UserConfigPath()
{
    wxString base;
    if (!wxGetEnv("XDG_CONFIG_HOME", &base) || !wxFileName(base).IsAbsolute())
        base = wxFileName(wxGetHomeDir(), ".config").GetFullPath();
    return wxFileName(wxFileName(base, "Cadrelle").GetFullPath(), "Cadrelle.conf").GetFullPath();
}

std::unique_ptr<Preference> Preference::OpenUserPreferences()
{
    const wxString path = UserConfigPath();
    EnsurePrivateDir(wxFileName(path).GetPath(), nullptr);
    return OpenFile(path);
}

namespace {

// Why the file at `path` cannot be read as written; empty when it can (or
// does not exist). Checked before the configuration parses it, which holds
// the whole file several times over in memory.
wxString FileProblem(const wxString& path)
{
    std::error_code error;
    const std::filesystem::path file(path.fn_str().data());
    if (!std::filesystem::exists(file, error))
        return wxString();
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    if (error)
        return wxString::Format("it cannot be read (%s)", wxString(error.message()));
    if (size > Preference::kMaxFileSize)
        return wxString::Format("it is larger than 1 MB (%llu bytes)", static_cast<unsigned long long>(size));
    std::ifstream in(file, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (!in.good() && !in.eof())
        return "it cannot be read";
    if (bytes.find('\0') != std::string::npos ||
        wxConvUTF8.ToWChar(nullptr, 0, bytes.data(), bytes.size()) == wxCONV_FAILED)
        return "it is not UTF-8 text";
    return wxString();
}

// Copies the file aside before anything can overwrite it; empty on failure.
wxString KeepCopy(const wxString& path, const Clock& clock)
{
    const wxString kept = KeptCopyName(path, clock.Now());
    wxString error;
    if (!CopyFilePrivately(path, kept, &error)) {
        wxLogMessage("%d ### the preferences file %s could not be kept: %s", LogMs(), path, error);
        return wxString();
    }
    return kept;
}

// What an unreadable file is replaced by: the password stays required.
std::string LockedFileContent(const Clock& clock)
{
    const wxString prefix = wxString::Format("%010lld", static_cast<long long>(clock.NowMs() / 1000));
    const wxString text = VtxEncode("usePassword") + "=" + VtxEncode(prefix + "1") + "\n" + VtxEncode("password") +
                          "=" + VtxEncode(prefix) + "\n";
    return text.utf8_string();
}

}  // namespace

std::unique_ptr<Preference> Preference::OpenFile(const wxString& path, const Clock& clock)
{
    wxString problem = FileProblem(path);
    wxString kept;
    bool readOnly = false;
    if (!problem.empty()) {
        kept = KeepCopy(path, clock);
        wxString error;
        readOnly = kept.empty() || !WriteFileAtomically(path, LockedFileContent(clock), &error);
        if (!kept.empty() && readOnly)
            wxLogMessage("%d ### the preferences file %s could not be replaced: %s", LogMs(), path, error);
    }
    std::unique_ptr<wxFileConfig> config;
    if (readOnly) {
        // Nothing of the file is read, and nothing is ever written to it.
        wxMemoryInputStream nothing("", 0);
        config = std::make_unique<wxFileConfig>(nothing);
    } else {
        config = std::make_unique<wxFileConfig>("Cadrelle", "Vantrel", path, wxEmptyString, wxCONFIG_USE_LOCAL_FILE);
        config->SetUmask(0077);  // the file is the user's alone
        // An older file may have been left readable by others; saves keep
        // the mode they find, so set it once here.
        if (wxFileName::FileExists(path))
            MakePrivate(path);
    }
    std::unique_ptr<Preference> preference(new Preference(config.get(), clock));
    preference->m_pOwnedConfig = std::move(config);
    preference->m_path = path;
    preference->m_bReadOnly = readOnly;
    preference->Load();
    if (!problem.empty()) {
        // Whether a password was set cannot be known: it stays required.
        preference->SetValue("usePassword", "1");
        preference->SetValue("password", "");
    } else if (!preference->m_unreadableKeys.empty()) {
        std::vector<wxString>& keys = preference->m_unreadableKeys;
        std::sort(keys.begin(), keys.end());
        problem = "these entries cannot be read:";
        for (const wxString& key : keys)
            problem << (key == keys.front() ? " " : ", ") << key;
        kept = KeepCopy(path, clock);
        // Without a copy the file must stay as it is.
        preference->m_bReadOnly = kept.empty();
        auto unreadable = [&keys](const char* key) { return std::find(keys.begin(), keys.end(), key) != keys.end(); };
        // A lock that may have been set stays set.
        if (unreadable("usePassword") || (unreadable("password") && preference->GetValue("usePassword") == "1")) {
            preference->SetValue("usePassword", "1");
            preference->SetValue("password", "");
        }
    }
    preference->m_problem = problem;
    preference->m_keptCopy = kept;
    if (!problem.empty())
        wxLogMessage("%d ### the preferences file %s was not read as written: %s; %s", LogMs(), path, problem,
                     kept.empty() ? wxString("no copy could be kept, so it is left as it is")
                                  : "the original is kept as " + kept);
    if (preference->IsPasswordUnreadable())
        wxLogMessage("%d ### the stored unlock password cannot be read; no password can unlock the window", LogMs());
    return preference;
}

wxString Preference::ProblemMessage() const
{
    if (m_problem.empty())
        return wxString();
    wxString text = wxString::Format("Cadrelle could not read its preferences file %s as written (%s).\n", m_path,
                                     m_problem);
    if (m_keptCopy.empty())
        text << "No copy of it could be kept, so Cadrelle leaves the file as it is and saves no preferences in this "
                "run; what could not be read has its default.";
    else
        text << wxString::Format("The original is kept as %s; what could not be read has its default.", m_keptCopy);
    if (IsPasswordUnreadable())
        text << "\n" << PasswordUnreadableMessage();
    return text;
}

bool Preference::IsPasswordUnreadable() const
{
    return GetValue("usePassword") == "1" && !IsCheckablePassword(GetValue("password"));
}

wxString Preference::PasswordUnreadableMessage() const
{
    const wxString password = GetValue("password");
    const wxString why = password.empty() ? wxString("the preferences file could not be read")
                                          : wxString("the stored value is not a valid password hash");
    return wxString::Format("The unlock password is in use but the stored one cannot be read (%s), so no password "
                            "can be checked and the window stays locked. To reset it, quit Cadrelle and delete %s: "
                            "every preference goes back to its default, with no password.",
                            why, m_path.empty() ? UserConfigPath() : m_path);
}

Preference::Geometry Preference::FitToScreen(const Geometry& stored, const Geometry& screen, wxString& note)
{
    Geometry fitted = stored;
    note.clear();
    auto fit = [&note](long& value, long low, long high, const char* key, const char* what) {
        const long before = value;
        value = std::max(low, std::min(value, high));
        if (value != before)
            note << (note.empty() ? "" : "; ")
                 << wxString::Format("%s %ld does not fit the screen, %s %ld", key, before, what, value);
    };
    fit(fitted.width, std::min(kMinWindowW, screen.width), screen.width, "mainFrmW", "the window is now");
    fit(fitted.height, std::min(kMinWindowH, screen.height), screen.height, "mainFrmH", "the window is now");
    fit(fitted.x, screen.x, screen.x + screen.width - fitted.width, "mainFrmX", "the window is now at");
    fit(fitted.y, screen.y, screen.y + screen.height - fitted.height, "mainFrmY", "the window is now at");
    return fitted;
}

wxString Preference::GetValue(const wxString& key) const
{
    std::shared_lock<std::shared_mutex> lock(m_mutex);
    auto it = m_values.find(key);
    return it == m_values.end() ? wxString() : it->second;
}

void Preference::SetValue(const wxString& key, const wxString& value)
{
    std::unique_lock<std::shared_mutex> lock(m_mutex);
    m_values[key] = value;
}

void Preference::Load()
{
    if (!m_pConfig)
        return;
    m_pConfig->SetPath("/");
    m_unreadableKeys.clear();
    {
        std::unique_lock<std::shared_mutex> lock(m_mutex);
        for (auto& entry : m_values) {
            wxString stored;
            if (!m_pConfig->Read(VtxEncode(entry.first), &stored) || stored.empty())
                continue;
            bool ok = false;
            const wxString decoded = VtxDecode(stored, &ok);
            // The time prefix must be there, all digits, or the entry is not ours.
            if (!ok || decoded.length() < kPrefixWidth || !decoded.Left(kPrefixWidth).IsNumber()) {
                m_unreadableKeys.push_back(entry.first);
                continue;
            }
            entry.second = decoded.Mid(kPrefixWidth);
        }
    }
    if (GetValue("preserveMainFrmSize") == "0") {
        SetValue("mainFrmX", "16");
        SetValue("mainFrmY", "16");
        SetValue("mainFrmW", "1024");
        SetValue("mainFrmH", "512");
    }
    if (GetValue("usePassword") == "0")
        SetValue("password", "");
}

void Preference::SaveSettingParam()
{
    if (!m_pConfig || m_bReadOnly)
        return;
    const wxString prefix = wxString::Format("%010lld", static_cast<long long>(m_clock.NowMs() / 1000));
    m_pConfig->SetPath("/");
    {
        std::shared_lock<std::shared_mutex> lock(m_mutex);
        for (const auto& entry : m_values)
            m_pConfig->Write(VtxEncode(entry.first), VtxEncode(prefix + entry.second));
    }
    m_pConfig->Flush();
}
