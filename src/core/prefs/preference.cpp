#include "core/prefs/preference.h"

#include <mutex>

#include <wx/fileconf.h>
#include <wx/filename.h>
#include <wx/utils.h>

#include "core/clock.h"
#include "core/data/atomic_file.h"
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
        {"tColWidthTID", "50"},          {"tColWidthType", "100"},         {"tColWidthStatus", "80"},
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
    auto config = std::make_unique<wxFileConfig>("Cadrelle", "Vantrel", path, wxEmptyString, wxCONFIG_USE_LOCAL_FILE);
    config->SetUmask(0077);  // the file is the user's alone
    // An older file may have been left readable by others; saves keep the
    // mode they find, so set it once here.
    if (wxFileName::FileExists(path))
        MakePrivate(path);
    auto preference = std::make_unique<Preference>(config.get());
    preference->m_pOwnedConfig = std::move(config);
    preference->Load();
    return preference;
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
    {
        std::unique_lock<std::shared_mutex> lock(m_mutex);
        for (auto& entry : m_values) {
            wxString stored;
            if (!m_pConfig->Read(VtxEncode(entry.first), &stored) || stored.empty())
                continue;
            bool ok = false;
            const wxString decoded = VtxDecode(stored, &ok);
            // The time prefix must be there, all digits, or the entry is not ours.
            if (!ok || decoded.length() < kPrefixWidth || !decoded.Left(kPrefixWidth).IsNumber())
                continue;
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
    if (!m_pConfig)
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
