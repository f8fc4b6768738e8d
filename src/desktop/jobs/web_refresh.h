#pragma once
// Refresh URL: one HTTP(S) request through libcurl on the calling job thread,
// so the main thread never waits for a server. The body is read and thrown
// away; the point is only that the server serves the page.

#include <atomic>

#include <wx/string.h>

struct WebRequestTimeouts {
    long connectMs = 10000;  // TCP and TLS set-up
    long totalMs = 60000;    // the whole request, redirects included
};

// The Refresh URL requests of one session: their ids and their cancelling.
class WebRequests {
public:
    // Sets up libcurl for the process (its own rule: once, before threads).
    WebRequests();

    // Sends a GET for `url` and logs the request's states under a new
    // request id. Returns when the request has ended (completed, failed or
    // cancelled). Any thread.
    void Refresh(int jid, const wxString& url, const WebRequestTimeouts& timeouts = {});

    // Ends every request under way at this moment; each logs "Cancelled".
    // Meant for shutdown, so that no job thread keeps talking to a slow
    // server.
    void CancelAll() { m_generation.fetch_add(1, std::memory_order_relaxed); }

private:
    std::atomic<int> m_lastRequestId{0};
    // A request started in one generation is cancelled once it moves.
    std::atomic<unsigned> m_generation{0};
};
