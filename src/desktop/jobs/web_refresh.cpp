#include "desktop/jobs/web_refresh.h"

#include <atomic>
#include <memory>
#include <mutex>

#include <curl/curl.h>
#include <wx/log.h>

#include "core/core_log.h"
#include "core/history/run_report.h"

namespace {

struct Transfer {
    const std::atomic<unsigned>* generationNow = nullptr;
    int jid = 0;
    int requestId = 0;
    unsigned generation = 0;
    bool activeLogged = false;
    wxString reason;  // the reason phrase of the last status line
};

// A status line "HTTP/1.1 404 Not Found": the request is under way, and the
// reason phrase is kept for a failure message.
size_t OnHeader(char* data, size_t size, size_t count, void* user)
{
    auto* transfer = static_cast<Transfer*>(user);
    const size_t length = size * count;
    const wxString line = wxString::FromUTF8(data, length).Trim();
    if (line.StartsWith("HTTP/")) {
        // Our wording for a response that has begun: libcurl has no state
        // between "started" and "finished".
        if (!transfer->activeLogged) {
            transfer->activeLogged = true;
            wxLogMessage("%d --- [JID_%d, WebReqID_%d] Still Active ......", LogMs(), transfer->jid,
                         transfer->requestId);
        }
        transfer->reason = line.AfterFirst(' ').AfterFirst(' ');
    }
    return length;
}

size_t DiscardBody(char*, size_t size, size_t count, void*)
{
    return size * count;
}

int OnProgress(void* user, curl_off_t, curl_off_t, curl_off_t, curl_off_t)
{
    const auto* transfer = static_cast<const Transfer*>(user);
    return transfer->generationNow->load(std::memory_order_relaxed) != transfer->generation ? 1 : 0;
}

struct EasyDeleter {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
struct ListDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

void LogFailed(const Transfer& transfer, const wxString& why)
{
    ReportRunFailed(why);
    wxLogMessage("%d <<- [JID_%d, WebReqID_%d] Failed: %s <<<<<<", LogMs(), transfer.jid, transfer.requestId, why);
}

}  // namespace

WebRequests::WebRequests()
{
    // libcurl's process-wide set-up, which must not run while another
    // thread uses libcurl: once per process, before the first job thread.
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

void WebRequests::Refresh(int jid, const wxString& url, const WebRequestTimeouts& timeouts)
{
    std::unique_ptr<CURL, EasyDeleter> easy(curl_easy_init());
    curl_slist* list = nullptr;
    for (const char* header : {"content-type: text/html; charset=utf-8", "X-UA-Compatible: IE=edge,chrome=1"}) {
        curl_slist* longer = curl_slist_append(list, header);
        if (!longer) {
            curl_slist_free_all(list);
            list = nullptr;
            break;
        }
        list = longer;
    }
    const std::unique_ptr<curl_slist, ListDeleter> headers(list);
    if (!easy || !headers) {
        wxLogMessage("%d --- [JID_%d] Creater wxWebRequest is failed", LogMs(), jid);
        ReportRunFailed("curl_easy_init");
        return;
    }

    Transfer transfer;
    transfer.jid = jid;
    transfer.requestId = m_lastRequestId.fetch_add(1) + 1;
    transfer.generationNow = &m_generation;
    transfer.generation = m_generation.load(std::memory_order_relaxed);
    char errorText[CURL_ERROR_SIZE] = "";
    const wxScopedCharBuffer urlText = url.utf8_str();
    CURL* h = easy.get();
    curl_easy_setopt(h, CURLOPT_URL, urlText.data());
    curl_easy_setopt(h, CURLOPT_HTTPHEADER, headers.get());
    // Only the web: a job must not be turned into a file or mail reader.
    curl_easy_setopt(h, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(h, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(h, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(h, CURLOPT_MAXREDIRS, 10L);
    curl_easy_setopt(h, CURLOPT_USERAGENT, "Cadrelle");
    curl_easy_setopt(h, CURLOPT_ACCEPT_ENCODING, "");
    curl_easy_setopt(h, CURLOPT_CONNECTTIMEOUT_MS, timeouts.connectMs);
    curl_easy_setopt(h, CURLOPT_TIMEOUT_MS, timeouts.totalMs);
    // Time-outs by signal would hit whichever thread the signal lands on.
    curl_easy_setopt(h, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(h, CURLOPT_ERRORBUFFER, errorText);
    curl_easy_setopt(h, CURLOPT_WRITEFUNCTION, DiscardBody);
    curl_easy_setopt(h, CURLOPT_HEADERFUNCTION, OnHeader);
    curl_easy_setopt(h, CURLOPT_HEADERDATA, &transfer);
    curl_easy_setopt(h, CURLOPT_XFERINFOFUNCTION, OnProgress);
    curl_easy_setopt(h, CURLOPT_XFERINFODATA, &transfer);
    curl_easy_setopt(h, CURLOPT_NOPROGRESS, 0L);

    wxLogMessage("%d --- [JID_%d, WebReqID_%d] Start Web Request >>>>>>", LogMs(), jid, transfer.requestId);
    const CURLcode result = curl_easy_perform(h);

    if (result == CURLE_ABORTED_BY_CALLBACK) {
        wxLogMessage("%d <<- [JID_%d, WebReqID_%d] Cancelled <<<<<<", LogMs(), jid, transfer.requestId);
        ReportRunFailed(_("Cancelled when Cadrelle ended"));
        return;
    }
    if (result != CURLE_OK) {
        wxString why = errorText[0] ? wxString::FromUTF8(errorText) : wxString(curl_easy_strerror(result));
        LogFailed(transfer, why.Trim());
        return;
    }
    long status = 0;
    curl_easy_getinfo(h, CURLINFO_RESPONSE_CODE, &status);
    if (status == 401 || status == 407) {
        // Nobody can answer a credentials request here, so it ends as a failure.
        wxLogMessage("%d --- [JID_%d, WebReqID_%d] Unauthorized ......", LogMs(), jid, transfer.requestId);
    }
    if (status >= 400) {
        LogFailed(transfer, wxString::Format("Error: %s (%ld)", transfer.reason, status));
        return;
    }
    wxLogMessage("%d <<- [JID_%d, WebReqID_%d] Completed <<<<<<", LogMs(), jid, transfer.requestId);
    ReportRunDetails(wxString::Format("HTTP %ld %s", status, url));
}
