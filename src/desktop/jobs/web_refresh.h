#pragma once
// Refresh URL: one HTTP(S) request through libcurl on the calling job thread,
// so the main thread never waits for a server. The body is read and thrown
// away; the point is only that the server serves the page.

#include <wx/string.h>

struct WebRequestTimeouts {
    long connectMs = 10000;  // TCP and TLS set-up
    long totalMs = 60000;    // the whole request, redirects included
};

// libcurl's process-wide set-up. Must run once before any job thread starts;
// RegisterNetworkJobActions calls it. Later calls do nothing.
void InitWebRequests();

// Sends a GET for `url` and logs the request's states under a new request
// id. Returns when the request has ended (completed, failed or cancelled).
void RefreshUrl(int jid, const wxString& url, const WebRequestTimeouts& timeouts = {});

// Ends every request under way at this moment; each logs "Cancelled". Meant
// for shutdown, so that no job thread keeps talking to a slow server.
void CancelWebRequests();
