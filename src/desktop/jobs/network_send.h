#pragma once
// The sending steps of the network jobs with their log lines. Each call
// blocks its thread (a job thread) for at most its time-outs.

#include <cstdint>

#include <wx/string.h>

#include "desktop/jobs/network_payload.h"

// A peer that does not answer a TCP connect is given up after this long; a
// peer that stops taking data fails the write after the write time-out.
constexpr int kTcpConnectTimeoutMs = 10000;
constexpr int kTcpWriteTimeoutMs = 10000;

// One datagram to `address` (IPv4, IPv6 or a host name). False when nothing
// was sent; the reason is logged.
bool SendUdpTo(int jid, const wxString& address, std::uint16_t port, const ByteVector& bytes);
// One datagram to 255.255.255.255 from a socket with broadcasting allowed.
bool SendUdpBroadcast(int jid, std::uint16_t port, const ByteVector& bytes);
// Connects, writes all bytes and closes. True when every byte was written.
bool SendTcp(int jid, const wxString& address, std::uint16_t port, const ByteVector& bytes,
             int connectTimeoutMs = kTcpConnectTimeoutMs, int writeTimeoutMs = kTcpWriteTimeoutMs);

// The log line for a port parameter that is not a port.
void LogBadPort(int jid, const wxString& portText);
