#pragma once
// Log lines and message boxes of the network jobs, captured for the tests,
// and a helper that runs a job of a kind with given parameters.

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <wx/log.h>

#include "core/jobs/job.h"
#include "core/user_messages.h"
#include "captured_log.h"

class CapturedMessages : public UserMessages {
public:
    void ShowMessage(const wxString& text, const wxString& caption) override;
    std::vector<std::pair<wxString, wxString>> Shown();

private:
    std::mutex m_mutex;
    std::vector<std::pair<wxString, wxString>> m_shown;
};

// Installs the captures for one test and puts the previous ones back.
class NetworkJobTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    // Runs a job of `kind` with `params` on the calling thread.
    static void RunJob(std::uint32_t kind, const ParamList& params, std::int32_t jid = 3);

    CapturedLog log;
    CapturedMessages messages;

private:
    wxLog* m_previous = nullptr;
};

std::string Bytes(std::initializer_list<int> values);
wxString PortText(std::uint16_t port);
