#include "core/jobs/job.h"

#include "core/text_number.h"
#include "core/translate.h"

#include <algorithm>

#include <wx/intl.h>

wxString JobTypeName(std::uint32_t type)
{
    const JobKind* kind = FindJobKind(type);
    return kind ? TranslateFromAnyThread(kind->name) : wxString();
}

wxString JobTypeEnglishName(std::uint32_t type)
{
    const JobKind* kind = FindJobKind(type);
    return kind ? wxString(kind->name) : wxString();
}

wxString Job::GetTypeName() const
{
    return JobTypeName(m_nType);
}

namespace {

template <typename List>
void CopyIds(const List& from, List& to)
{
    if (to.empty())
        to.reserve(std::max<std::size_t>(16, from.size()));
    to.assign(from.begin(), from.end());
}

}  // namespace

void Job::SetParam(const JobParam& param)
{
    m_nId = param.id;
    m_nType = param.type;
    m_strDescription = param.description;
    SetEnable(param.enable);
    CopyIds(param.associatedJids, m_associatedJids);
    m_nJobInterval = param.jobInterval;
    m_params = param.params;
    CopyIds(param.triggerIds, m_triggerIds);
}

void Job::GetParam(JobParam& param) const
{
    param.id = m_nId;
    param.type = m_nType;
    param.description = m_strDescription;
    param.enable = IsEnabled();
    CopyIds(m_associatedJids, param.associatedJids);
    param.jobInterval = m_nJobInterval;
    param.params = m_params;
    CopyIds(m_triggerIds, param.triggerIds);
}

wxString Job::GetParamText() const
{
    return JoinJobParams(m_params);
}

wxString Job::GetSummary() const
{
    return m_strDescription + " | " + GetParamText();
}

wxString Job::GetParamAt(std::size_t index) const
{
    return index < m_params.size() ? m_params[index] : wxString();
}

wxString JoinJobParams(const ParamList& params)
{
    wxString line;
    for (std::size_t i = 0; i < params.size(); ++i) {
        if (i > 0)
            line += " $ ";
        line += params[i];
    }
    return line;
}

ParamList SplitJobParams(const wxString& info)
{
    ParamList params;
    std::size_t begin = 0;
    while (begin <= info.length()) {
        std::size_t end = info.find('$', begin);
        if (end == wxString::npos)
            end = info.length();
        wxString piece = info.Mid(begin, end - begin);
        piece.Trim(true).Trim(false);
        if (!piece.empty())
            params.push_back(piece);
        begin = end + 1;
    }
    return params;
}

namespace {

template <typename List>
wxString JoinIds(const List& ids)
{
    wxString text;
    for (std::size_t i = 0; i < ids.size(); ++i) {
        if (i > 0)
            text += ",";
        text << ids[i];
    }
    return text;
}

}  // namespace

wxString JoinIdList(const IdList& ids)
{
    return JoinIds(ids);
}

wxString JoinIdList(const TidList& ids)
{
    return JoinIds(ids);
}

IdList SplitIdList(const wxString& text)
{
    IdList ids;
    std::size_t begin = 0;
    while (begin <= text.length()) {
        std::size_t end = text.find(',', begin);
        if (end == wxString::npos)
            end = text.length();
        wxString piece = text.Mid(begin, end - begin);
        piece.Trim(true).Trim(false);
        if (!piece.empty()) {
            ids.push_back(static_cast<std::int32_t>(LeadingLong(piece)));
        }
        begin = end + 1;
    }
    return ids;
}

std::unique_ptr<Job> CreateJob(std::uint32_t type)
{
    const JobKind* kind = FindJobKind(type);
    if (!kind)
        return nullptr;
    auto job = std::make_unique<Job>(type);
    job->SetWarnBeforeRun(kind->warnBeforeRun);
    return job;
}

std::unique_ptr<Job> CopyJob(const Job& job)
{
    auto copy = std::make_unique<Job>(job.GetType());
    JobParam param;
    job.GetParam(param);
    copy->SetParam(param);
    copy->SetWarnBeforeRun(job.IsWarnBeforeRun());
    return copy;
}
