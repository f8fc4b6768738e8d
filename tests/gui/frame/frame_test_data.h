#pragma once
// Five jobs of three kinds, one disabled; Interval and Cron triggers that do
// not fire during a test (03:00, 1 January).

#include <wx/dir.h>
#include <wx/ffile.h>
#include <wx/filename.h>

namespace frametest {

inline wxString JobXml(int jid, int kind, const char* desc, bool enabled, int tid, const char* info)
{
    return wxString::Format("<JOB><ID>%d</ID><TYPE>%d</TYPE><DESC>%s</DESC><ENABLE>%d</ENABLE><JINTERVAL>0"
                            "</JINTERVAL><TID>%d</TID><JID></JID><INFO>%s</INFO></JOB>\n",
                            jid, kind, desc, enabled ? 1 : 0, tid, info);
}

inline wxString TriggerXml(int tid, int kind, const char* condition)
{
    return wxString::Format("<TRIGGER><ID>%d</ID><TYPE>%d</TYPE><CONDITION>%s</CONDITION><PREVFIRE>0 0 0 1 1 * "
                            "1999</PREVFIRE><NEXTFIRE>0 0 0 1 1 * 1999</NEXTFIRE><START>0 0 0 1 1 * 1999</START>"
                            "<END>59 59 23 31 12 * 2999</END></TRIGGER>\n",
                            tid, kind, condition);
}

// Writes the example data file into `appDir`.
inline void WriteExampleData(const wxString& appDir)
{
    wxString xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SCHEDULER>\n";
    xml += JobXml(0, 0, "Morning coffee", true, 0, "Time for coffee $ 0");
    xml += JobXml(1, 10, "Ping backup box", true, 1, "hello $ 0 $ 0 $ 127.0.0.1 $ 9");
    xml += JobXml(2, 10, "Old notice", false, 2, "bye $ 0 $ 0 $ 127.0.0.1 $ 9");
    xml += JobXml(12, 0, "Stretch", true, 3, "Stand up $ 0");
    xml += JobXml(21, 1, "Open news", true, 4, "https://example.org/news");
    xml += TriggerXml(0, 2, "0 0 3 * * ?") + TriggerXml(1, 11, "0 0 3 * * ?") + TriggerXml(2, 2, "0 0 3 * * ?");
    xml += TriggerXml(3, 11, "0 0 0 1 1 ?") + TriggerXml(4, 2, "0 0 0 1 1 ?");
    xml += "</SCHEDULER>\n";
    wxFileName::Mkdir(appDir + "/data", 0700, wxPATH_MKDIR_FULL);
    wxFFile(appDir + "/data/data1.xml", "w").Write(xml);
}

inline wxString ReadText(const wxString& path)
{
    wxString text;
    wxFFile(path, "r").ReadAll(&text);
    return text;
}

inline std::size_t Count(const wxString& text, const wxString& what)
{
    wxString rest = text;
    return rest.Replace(what, "");
}

// All log files of `appDir`.
inline wxString LogText(const wxString& appDir)
{
    wxArrayString files;
    wxDir::GetAllFiles(appDir, &files, "log_*.txt", wxDIR_FILES);
    wxString text;
    for (const wxString& file : files)
        text += ReadText(file);
    return text;
}

}  // namespace frametest
