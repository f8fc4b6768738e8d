#include "desktop/jobs/network_send.h"

#include <wx/log.h>

#include "core/core_log.h"
#include "core/history/run_report.h"
#include "desktop/jobs/net_socket.h"

namespace {

void ReportSent(std::size_t count, const wxString& host, std::uint16_t port)
{
    ReportRunDetails(wxString::Format(wxPLURAL("%zu byte sent to %s:%u", "%zu bytes sent to %s:%u", count), count,
                                      host, static_cast<unsigned>(port)));
}

void LogFailure(int jid, const NetFailure& failure)
{
    ReportRunFailed(failure.detail);
    wxLogMessage("%d --- [JID: %d] wxSocketError code: %d (%s)", LogMs(), jid, static_cast<int>(failure.code),
                 failure.detail);
}

bool SendDatagram(int jid, const NetPeer& peer, bool broadcast, const ByteVector& bytes)
{
    NetFailure failure;
    std::unique_ptr<UdpSocket> socket = OpenUdpSocket(peer.ipv6, broadcast, &failure);
    if (!socket) {
        wxLogMessage("%d --- [JID: %d] ERROR: failed to create UDP socket: %s", LogMs(), jid, failure.detail);
        ReportRunFailed(failure.detail);
        return false;
    }
    const NetEndpoint local = socket->Local();
    wxLogMessage("%d --- [JID: %d] Created UDP socket at %s:%u", LogMs(), jid, local.address,
                 static_cast<unsigned>(local.port));
    wxLogMessage("%d --- [JID: %d] Testing UDP with peer at %s:%u", LogMs(), jid, peer.host,
                 static_cast<unsigned>(peer.port));
    if (!socket->SendTo(peer, bytes, &failure)) {
        LogFailure(jid, failure);
        return false;
    }
    ReportSent(bytes.size(), peer.host, peer.port);
    return true;
}

}  // namespace

void LogBadPort(int jid, const wxString& portText)
{
    NetFailure failure{NetErrorCode::InvalidPort,
                       wxString::Format("port \"%s\" is not a number from 1 to 65535; nothing sent", portText)};
    LogFailure(jid, failure);
}

bool SendUdpTo(int jid, const wxString& address, std::uint16_t port, const ByteVector& bytes)
{
    NetPeer peer;
    NetFailure failure;
    if (!ResolvePeer(address, port, &peer, &failure)) {
        LogFailure(jid, failure);
        return false;
    }
    return SendDatagram(jid, peer, false, bytes);
}

bool SendUdpBroadcast(int jid, std::uint16_t port, const ByteVector& bytes)
{
    return SendDatagram(jid, BroadcastPeer(port), true, bytes);
}

bool SendTcp(int jid, const wxString& address, std::uint16_t port, const ByteVector& bytes, int connectTimeoutMs,
             int writeTimeoutMs)
{
    wxLogMessage("%d --- [JID: %d] Connecting......", LogMs(), jid);
    NetPeer peer;
    NetFailure failure;
    if (!ResolvePeer(address, port, &peer, &failure)) {
        LogFailure(jid, failure);
        return false;
    }
    std::unique_ptr<TcpConnection> connection = ConnectTcp(peer, connectTimeoutMs, writeTimeoutMs, &failure);
    if (!connection) {
        LogFailure(jid, failure);
        return false;
    }
    const int total = static_cast<int>(bytes.size());
    wxLogMessage("%d --- [JID: %d] Connected. Sending %d bytes of data", LogMs(), jid, total);
    const int written = static_cast<int>(connection->WriteAll(bytes, &failure));
    wxLogMessage("%d --- [JID: %d] Written %d bytes, %d bytes to do", LogMs(), jid, written, total - written);
    if (written < total) {
        wxLogMessage("%d --- [JID: %d] Socket Write error", LogMs(), jid);
        LogFailure(jid, failure);
        return false;
    }
    ReportSent(bytes.size(), peer.host, peer.port);
    return true;
}
