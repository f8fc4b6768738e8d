#include "desktop/jobs/network_jobs.h"

#include <wx/log.h>

#include "core/core_log.h"
#include "core/history/run_report.h"
#include "core/jobs/job.h"
#include "core/jobs/job_actions.h"
#include "core/translate.h"
#include "core/user_messages.h"
#include "desktop/jobs/network_payload.h"
#include "desktop/jobs/network_send.h"
#include "desktop/jobs/web_refresh.h"
#include "core/session/session_context.h"

namespace {

// Parameters: 0 message, 1 format, 2 broadcast, 3 address list, 4 port.
void SendUdpMessage(const Job& job, SessionContext&)
{
    const int jid = job.GetId();
    const wxString portText = job.GetParamAt(4);
    const std::optional<std::uint16_t> port = ParsePort(portText);
    if (!port) {
        LogBadPort(jid, portText);
        return;
    }
    const ByteVector payload = MessagePayload(job.GetParamAt(0), job.GetParamAt(1));
    // With broadcast on, the address list is ignored.
    if (job.GetParamAt(2) == "1") {
        SendUdpBroadcast(jid, *port, payload);
        return;
    }
    const std::vector<wxString> addresses = SplitAddressList(job.GetParamAt(3));
    if (addresses.empty())
    {
        wxLogMessage("%d --- [JID: %d] The IP address list is empty; nothing sent", LogMs(), jid);
        ReportRunFailed(_("Nothing to do: a required parameter is empty"));
    }
    for (const wxString& address : addresses)
        SendUdpTo(jid, address, *port, payload);
}

// Parameters: 0 message, 1 format, 2 address, 3 port.
void SendTcpMessage(const Job& job, SessionContext&)
{
    const int jid = job.GetId();
    const ByteVector payload = MessagePayload(job.GetParamAt(0), job.GetParamAt(1));
    const wxString portText = job.GetParamAt(3);
    const std::optional<std::uint16_t> port = ParsePort(portText);
    if (!port) {
        wxLogMessage("%d --- [JID: %d] Connecting......", LogMs(), jid);
        LogBadPort(jid, portText);
        return;
    }
    SendTcp(jid, job.GetParamAt(2), *port, payload);
}

// Parameters: 0 MAC address ("aa-bb-cc-dd-ee-ff"), 1 port.
void WakeOnLan(const Job& job, SessionContext& context)
{
    const MacAddress mac = ParseMacAddress(job.GetParamAt(0));
    if (!mac.IsValid()) {
        const wxString text = wxString::Format(TranslateFromAnyThread("Mac Address is not correct, Address size is %d"),
                                               static_cast<int>(mac.pieces));
        context.Messages().ShowJobFailure(
            static_cast<std::uint32_t>(job.GetId()),
            JobFailureText(text, job.GetId(), job.GetDescription(), context.GetClock().Now()));
        ReportRunFailed(text);
        return;
    }
    const wxString portText = job.GetParamAt(1);
    const std::optional<std::uint16_t> port = ParsePort(portText);
    if (!port) {
        LogBadPort(job.GetId(), portText);
        return;
    }
    SendUdpBroadcast(job.GetId(), *port, WakeOnLanPacket(mac.bytes));
}


}  // namespace

void RegisterNetworkJobActions(JobActions& actions, const std::shared_ptr<WebRequests>& web)
{
    // Parameter 0: the URL.
    actions.Set(NJobTypeRefreshUrl, [web](const Job& job, SessionContext&) { web->Refresh(job.GetId(), job.GetParamAt(0)); });
    actions.Set(NJobTypeSendUdpMsg, SendUdpMessage);
    actions.Set(NJobTypeSendTcpMsg, SendTcpMessage);
    actions.Set(NJobTypeWakeOnLan, WakeOnLan);
}
