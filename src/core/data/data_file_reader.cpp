#include "core/data/data_file_reader.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <string>
#include <unordered_set>

#include <expat.h>
#include <wx/filename.h>
#include <wx/wxcrtvararg.h>

namespace {

// The file has always been read 1 KiB at a time, and where a field's text
// starts with blanks that a chunk boundary cuts off from the rest, the blanks
// were dropped. Reading the same way keeps every file loading as it did.
constexpr std::size_t kChunk = 1024;

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool IsSpace(char c)
{
    return IsBlank(c) || c == '\f' || c == '\v';
}

// Element names are compared without regard to case; `upper` is upper case.
bool SameName(const char* name, const char* upper)
{
    for (; *name && *upper; ++name, ++upper) {
        const char c = (*name >= 'a' && *name <= 'z') ? static_cast<char>(*name - 'a' + 'A') : *name;
        if (c != *upper)
            return false;
    }
    return *name == 0 && *upper == 0;
}

// A number as the file has always been read: optional blanks and a sign,
// then the leading digits; empty or junk gives 0.
struct Number {
    long long value = 0;
    bool empty = true;     // nothing but blanks
    bool clean = false;    // the whole text is the number
    bool overflow = false; // does not fit 64 bits
    bool Fits(long long low, long long high) const { return !overflow && value >= low && value <= high; }
};

Number ReadNumber(const std::string& text)
{
    Number n;
    std::size_t i = 0;
    const std::size_t size = text.size();
    while (i < size && IsBlank(text[i]))
        ++i;
    n.empty = i == size;
    bool negative = false;
    if (i < size && (text[i] == '-' || text[i] == '+'))
        negative = text[i++] == '-';
    const std::size_t digits = i;
    unsigned long long v = 0;
    const unsigned long long limit = negative ? 9223372036854775808ULL : 9223372036854775807ULL;
    for (; i < size && text[i] >= '0' && text[i] <= '9'; ++i) {
        const unsigned d = static_cast<unsigned>(text[i] - '0');
        if (v > (limit - d) / 10)
            n.overflow = true;
        else
            v = v * 10 + d;
    }
    const std::size_t end = i;
    while (i < size && IsBlank(text[i]))
        ++i;
    n.clean = end > digits && i == size;
    if (!n.overflow)
        n.value = negative ? static_cast<long long>(0 - v) : static_cast<long long>(v);
    return n;
}

std::vector<std::string> Split(const std::string& text, char separator)
{
    std::vector<std::string> pieces;
    std::size_t begin = 0;
    while (begin <= text.size()) {
        std::size_t end = text.find(separator, begin);
        if (end == std::string::npos)
            end = text.size();
        std::size_t a = begin, b = end;
        while (a < b && IsSpace(text[a]))
            ++a;
        while (b > a && IsSpace(text[b - 1]))
            --b;
        if (b > a)
            pieces.emplace_back(text, a, b - a);
        begin = end + 1;
    }
    return pieces;
}

wxString Text(const std::string& utf8)
{
    return wxString::FromUTF8(utf8.data(), utf8.size());
}

const char* const kJobFields[] = {"ID", "TYPE", "DESC", "ENABLE", "JINTERVAL", "TID", "JID", "INFO"};
enum { JbId, JbType, JbDesc, JbEnable, JbInterval, JbTid, JbJid, JbInfo, JbCount };
const char* const kTriggerFields[] = {"ID", "TYPE", "CONDITION", "PREVFIRE", "NEXTFIRE", "START", "END"};
enum { TrId, TrType, TrCondition, TrPrevFire, TrNextFire, TrStart, TrEnd, TrCount };
constexpr int kMaxFields = static_cast<int>(JbCount);

class Reader {
public:
    Reader(DataFileContent& out, const SessionContext& context) : m_out(out), m_context(context), m_parser(XML_ParserCreate(nullptr))
    {
        XML_SetUserData(m_parser, this);
        XML_SetElementHandler(m_parser, &Reader::OnStart, &Reader::OnEnd);
        XML_SetCharacterDataHandler(m_parser, &Reader::OnText);
        XML_SetCdataSectionHandler(m_parser, &Reader::OnCdataStart, &Reader::OnCdataEnd);
        XML_SetCommentHandler(m_parser, [](void* self, const XML_Char*) { static_cast<Reader*>(self)->CloseText(); });
        XML_SetProcessingInstructionHandler(
            m_parser, [](void* self, const XML_Char*, const XML_Char*) { static_cast<Reader*>(self)->CloseText(); });
        // A default handler keeps references to entities declared in the
        // file unexpanded: their text is not taken, and the user is told.
        XML_SetDefaultHandler(m_parser, &Reader::OnDefault);
    }
    ~Reader() { XML_ParserFree(m_parser); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    // False once the file is known to be unusable.
    bool Feed(const char* data, std::size_t size, bool last)
    {
        if (XML_Parse(m_parser, data, static_cast<int>(size), last) == XML_STATUS_ERROR) {
            Fail(m_tooDeep ? wxString::Format("elements are nested more than %d levels deep", kMaxDataFileDepth)
                           : wxString::Format("%s at line %lu", XML_ErrorString(XML_GetErrorCode(m_parser)),
                                              static_cast<unsigned long>(XML_GetCurrentLineNumber(m_parser))));
            return false;
        }
        if (last)
            Finish();
        return true;
    }

    // Nothing of an unusable file counts, not even what was noted so far.
    void Fail(const wxString& problem)
    {
        m_out = DataFileContent();
        m_out.problem = problem;
    }

private:
    enum class Walk { BeforeRoot, Records, Ended, ForeignRoot };
    enum class Record { None, Job, Trigger };
    // A field's value is its first run of text (or CDATA section); text made
    // of blanks alone does not start a run, unless a character reference
    // wrote the blank.
    enum class Run { None, Open, Closed };

    static void XMLCALL OnStart(void* self, const XML_Char* name, const XML_Char**)
    {
        static_cast<Reader*>(self)->Start(name);
    }
    static void XMLCALL OnEnd(void* self, const XML_Char*) { static_cast<Reader*>(self)->End(); }
    static void XMLCALL OnText(void* self, const XML_Char* s, int len)
    {
        static_cast<Reader*>(self)->Characters(s, static_cast<std::size_t>(len));
    }
    static void XMLCALL OnCdataStart(void* self)
    {
        auto* r = static_cast<Reader*>(self);
        if (r->m_run == Run::None && r->InField())
            r->m_run = Run::Open;
        else
            r->CloseText();
    }
    static void XMLCALL OnCdataEnd(void* self) { static_cast<Reader*>(self)->CloseText(); }
    static void XMLCALL OnDefault(void* self, const XML_Char* s, int len)
    {
        auto* r = static_cast<Reader*>(self);
        if (len > 1 && s[0] == '&' && r->m_walk == Walk::Records)
            r->Drop(wxString::Format("the text of the entity %s in %s was not kept", Text(std::string(s, len)),
                                     r->m_record == Record::None ? wxString("the file") : r->Label()));
    }

    bool InField() const { return m_field >= 0 && m_depth == 3; }
    void CloseText()
    {
        if (m_run == Run::Open)
            m_run = Run::Closed;
    }
    void Drop(const wxString& what) { m_out.dropped.push_back(what); }

    void Start(const char* name)
    {
        CloseText();
        if (++m_depth > kMaxDataFileDepth) {
            m_tooDeep = true;
            XML_StopParser(m_parser, XML_FALSE);
            return;
        }
        if (m_depth == 1) {
            m_out.schedulerRoot = SameName(name, "SCHEDULER");
            m_walk = m_out.schedulerRoot ? Walk::Records : Walk::ForeignRoot;
        } else if (m_depth == 2 && m_walk == Walk::Records) {
            if (SameName(name, "JOB") || SameName(name, "TRIGGER")) {
                m_record = SameName(name, "JOB") ? Record::Job : Record::Trigger;
                for (int i = 0; i < kMaxFields; ++i) {
                    m_texts[i].clear();
                    m_seen[i] = false;
                }
            } else {
                m_walk = Walk::Ended;
                m_endedAt = Text(name);
                m_out.stoppedAtUnknownElement = true;
            }
        } else if (m_depth == 2 && m_walk == Walk::Ended) {
            ++m_after;
        } else if (m_depth == 3 && m_record != Record::None) {
            const bool job = m_record == Record::Job;
            const char* const* names = job ? kJobFields : kTriggerFields;
            const int count = job ? static_cast<int>(JbCount) : static_cast<int>(TrCount);
            m_field = -1;
            for (int i = 0; i < count && m_field < 0; ++i) {
                if (SameName(name, names[i]))
                    m_field = i;
            }
            if (m_field < 0) {
                m_pendingNotes.push_back(wxString::Format("<%s> is not a field of a %s and was ignored", Text(name),
                                                          job ? "job" : "trigger"));
            } else {
                if (m_seen[m_field])
                    m_pendingNotes.push_back(
                        wxString::Format("a second <%s> replaced the first one", names[m_field]));
                m_seen[m_field] = true;
                m_texts[m_field].clear();
                m_run = Run::None;
            }
        }
    }

    void End()
    {
        CloseText();
        if (m_depth == 3)
            m_field = -1;
        else if (m_depth == 2 && m_record != Record::None) {
            if (m_record == Record::Job)
                FinishJob();
            else
                FinishTrigger();
            m_record = Record::None;
            m_pendingNotes.clear();
        }
        --m_depth;
    }

    void Characters(const char* s, std::size_t len)
    {
        if (!InField() || m_run == Run::Closed)
            return;
        if (m_run == Run::None) {
            bool blank = true;
            for (std::size_t i = 0; i < len && blank; ++i)
                blank = IsBlank(s[i]);
            // A blank written as a character reference is the text's own:
            // that is how a text that starts with a blank is saved.
            if (blank && !AtCharacterReference())
                return;
            m_run = Run::Open;
        }
        m_texts[m_field].append(s, len);
    }

    // The text being delivered comes from "&#...;" ("&" followed by a blank
    // can only be that: the named entities stand for other characters).
    bool AtCharacterReference() const
    {
        int offset = 0, size = 0;
        const char* context = XML_GetInputContext(m_parser, &offset, &size);
        return context && offset >= 0 && offset < size && context[offset] == '&';
    }

    // "job 4 "Backup"", or its place in the file when the ID is unusable.
    wxString Label() const
    {
        const bool job = m_record == Record::Job;
        const Number id = ReadNumber(m_texts[0]);
        wxString label = id.clean && !id.overflow
                             ? wxString::Format("%s %lld", job ? "job" : "trigger", id.value)
                             : wxString::Format("the %s at position %zu", job ? "job" : "trigger",
                                                job ? m_jobCount + 1 : m_triggerCount + 1);
        if (job && !m_texts[JbDesc].empty())
            label << " \"" << Text(m_texts[JbDesc]) << "\"";
        return label;
    }

    // Checks the ID; false when the record must be refused.
    template <typename Seen>
    bool CheckId(const Number& id, long long low, long long high, Seen& seen)
    {
        const std::string& text = m_texts[0];
        if (!id.Fits(low, high)) {
            Drop(wxString::Format("%s: the ID %s does not fit; not loaded", Label(), Text(text)));
            ++m_out.refused;
            return false;
        }
        if (id.empty)
            Drop(wxString::Format("%s has no ID; loaded with ID 0", Label()));
        else if (!id.clean)
            Drop(wxString::Format("%s: the ID \"%s\" is not a number; loaded as %lld", Label(), Text(text), id.value));
        else if (id.value < 0)
            Drop(wxString::Format("%s has a negative ID", Label()));
        if (!seen.insert(id.value).second)
            Drop(wxString::Format("%s: another one has the same ID", Label()));
        return true;
    }

    // The kind number; false (and counted) when no kind has it.
    bool CheckKind(const Number& type, long long highest, std::size_t& skipped)
    {
        if (type.Fits(0, highest)) {
            if (!type.clean)
                Drop(wxString::Format("%s: the kind \"%s\" is not a number; read as %lld", Label(),
                                      Text(m_texts[1]), type.value));
            return true;
        }
        Drop(wxString::Format("%s: unknown kind %s; not loaded", Label(), Text(m_texts[1])));
        ++skipped;
        // A kind past 32 bits used to wrap round onto a real one.
        if (!type.Fits(LLONG_MIN, 0xFFFFFFFFLL))
            ++m_out.refused;
        return false;
    }

    void FlushNotes()
    {
        if (m_pendingNotes.empty())
            return;
        const wxString label = Label();
        for (const wxString& note : m_pendingNotes)
            Drop(label + ": " + note);
    }

    void FinishTrigger()
    {
        FlushNotes();
        const Number id = ReadNumber(m_texts[TrId]);
        const Number type = ReadNumber(m_texts[TrType]);
        ++m_triggerCount;
        if (!CheckKind(type, NTriggerTypeCount - 1, m_out.skippedTriggers) || !CheckId(id, LLONG_MIN, LLONG_MAX, m_tids))
            return;
        const std::uint32_t kind = static_cast<std::uint32_t>(type.value);
        std::unique_ptr<Trigger> trigger = CreateTrigger(kind, m_context);
        // Kinds that keep their condition's numbers in 32 bits.
        if (const std::size_t numbers = FindTriggerKind(kind)->int32ConditionNumbers) {
            const std::vector<std::string> tokens = Split(m_texts[TrCondition], ' ');
            const std::size_t used = std::min<std::size_t>(tokens.size(), numbers);
            for (std::size_t i = 0; i < used; ++i) {
                const std::string& token = tokens[i];
                if (!ReadNumber(token).Fits(INT_MIN, INT_MAX)) {
                    Drop(wxString::Format("%s: the number %s in its condition does not fit; not loaded", Label(),
                                          Text(token)));
                    ++m_out.refused;
                    return;
                }
            }
        }
        TriggerParam param;
        param.tid = id.value;
        param.type = static_cast<std::uint32_t>(type.value);
        param.firePending = trigger->IsFirePending();
        param.condition = Text(m_texts[TrCondition]);
        param.prevFire = Text(m_texts[TrPrevFire]);
        param.nextFire = Text(m_texts[TrNextFire]);
        param.start = Text(m_texts[TrStart]);
        param.end = Text(m_texts[TrEnd]);
        trigger->Load(param);
        m_out.triggers.push_back(std::move(trigger));
    }

    // An id list ("TID" or "JID"): pieces that are not clean numbers are
    // reported, pieces that do not fit are left out.
    template <typename List>
    List ReadIds(const std::string& text, const char* what, long long low, long long high)
    {
        List ids;
        for (const std::string& piece : Split(text, ',')) {
            const Number n = ReadNumber(piece);
            if (!n.Fits(low, high)) {
                Drop(wxString::Format("%s: the %s %s does not fit and was left out", Label(), what, Text(piece)));
                ++m_out.refused;
                continue;
            }
            if (!n.clean)
                Drop(wxString::Format("%s: the %s \"%s\" is not a number; read as %lld", Label(), what, Text(piece),
                                      n.value));
            ids.push_back(static_cast<typename List::value_type>(n.value));
        }
        return ids;
    }

    void FinishJob()
    {
        FlushNotes();
        const Number id = ReadNumber(m_texts[JbId]);
        const Number type = ReadNumber(m_texts[JbType]);
        ++m_jobCount;
        if (!CheckKind(type, NJobTypeCount - 1, m_out.skippedJobs) || !CheckId(id, INT_MIN, INT_MAX, m_jids))
            return;
        JobParam param;
        param.id = static_cast<std::int32_t>(id.value);
        param.type = static_cast<std::uint32_t>(type.value);
        param.description = Text(m_texts[JbDesc]);
        const std::string& enable = m_texts[JbEnable];
        param.enable = enable == "1";
        if (enable != "1" && enable != "0")
            Drop(wxString::Format("%s: ENABLE \"%s\" read as disabled", Label(), Text(enable)));
        const Number interval = ReadNumber(m_texts[JbInterval]);
        if (interval.Fits(INT_MIN, INT_MAX)) {
            param.jobInterval = static_cast<std::int32_t>(interval.value);
            if (!interval.clean && !interval.empty)
                Drop(wxString::Format("%s: the interval \"%s\" is not a number; read as %lld", Label(),
                                      Text(m_texts[JbInterval]), interval.value));
        } else {
            Drop(wxString::Format("%s: the interval %s does not fit; read as 0", Label(), Text(m_texts[JbInterval])));
            ++m_out.refused;
        }
        param.triggerIds = ReadIds<TidList>(m_texts[JbTid], "trigger ID", LLONG_MIN, LLONG_MAX);
        param.associatedJids = ReadIds<IdList>(m_texts[JbJid], "associated job ID", INT_MIN, INT_MAX);
        param.params = SplitJobParams(Text(m_texts[JbInfo]));
        std::unique_ptr<Job> job = CreateJob(param.type);
        job->SetParam(param);
        m_out.jobs.push_back(std::move(job));
    }

    void Finish()
    {
        m_out.wellFormed = true;
        if (m_walk == Walk::Ended)
            Drop(wxString::Format("<%s> is neither a job nor a trigger: reading stopped there, and it and the %zu "
                                  "element(s) after it were not loaded",
                                  m_endedAt, m_after));
        if (!m_out.schedulerRoot)
            m_out.problem = "the root element is not SCHEDULER";
    }

    DataFileContent& m_out;
    const SessionContext& m_context;
    XML_Parser m_parser;
    int m_depth = 0;
    bool m_tooDeep = false;
    Walk m_walk = Walk::BeforeRoot;
    Record m_record = Record::None;
    std::string m_texts[kMaxFields];
    bool m_seen[kMaxFields] = {};
    int m_field = -1;
    Run m_run = Run::None;
    std::vector<wxString> m_pendingNotes;
    wxString m_endedAt;
    std::size_t m_after = 0;
    std::size_t m_jobCount = 0;
    std::size_t m_triggerCount = 0;
    std::unordered_set<long long> m_tids;
    std::unordered_set<long long> m_jids;
};

}  // namespace

void ReadDataFileBytes(const char* data, std::size_t size, DataFileContent& out, const SessionContext& context)
{
    out = DataFileContent();
    Reader reader(out, context);
    for (std::size_t done = 0;;) {
        const std::size_t n = std::min(kChunk, size - done);
        const bool last = done + n == size;
        if (!reader.Feed(data + done, n, last) || last)
            return;
        done += n;
    }
}

void ReadDataFile(const wxString& path, DataFileContent& out, const SessionContext& context, bool* exists)
{
    out = DataFileContent();
    const bool present = wxFileName::FileExists(path);
    if (exists)
        *exists = present;
    if (!present) {
        out.problem = "the file does not exist";
        return;
    }
    std::unique_ptr<FILE, int (*)(FILE*)> file(wxFopen(path, "rb"), &std::fclose);
    if (!file) {
        out.problem = "the file cannot be opened";
        return;
    }
    Reader reader(out, context);
    std::vector<char> buffer(kChunk);
    for (;;) {
        const std::size_t got = std::fread(buffer.data(), 1, buffer.size(), file.get());
        const bool last = got < buffer.size();
        if (last && std::ferror(file.get())) {
            reader.Fail("the file cannot be read");
            return;
        }
        if (!reader.Feed(buffer.data(), got, last) || last)
            return;
    }
}
