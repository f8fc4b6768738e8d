#pragma once
// The checks of the job dialog: each parameter by its field (the fields are
// the kinds' descriptors, core/jobs/job_kinds.h) and, for some kinds, the
// parameters together; the dialog refuses to save a job whose parameters
// could not run.

#include <cstdint>
#include <functional>
#include <vector>

#include <wx/arrstr.h>
#include <wx/string.h>

#include "core/jobs/job.h"

// Checks parameters for the kind. False with `message` naming the field
// (its label) and what is wrong.
bool ValidateJobParams(std::uint32_t kind, const ParamList& params, wxString& message);

// A web address the desktop can open: a scheme, "://", then a host (a path
// for file:), no blanks.
bool IsUrl(const wxString& text);
// For an address typed without its scheme ("www.example.com/x"), the same
// with "https://" in front, which the dialog offers; "" when it is no such
// address.
wxString UrlWithScheme(const wxString& text);

// The chain settings: the job interval in ms (0 to 9999) and the associated
// JIDs as typed ("3, 5"). `exists` tells whether a JID names a job; `self`
// is the edited job's JID (a job may not chain to itself: it would run for
// ever). On success `jids` holds the list.
bool ValidateChain(const wxString& intervalText, const wxString& jidsText, std::int32_t self,
                   const std::function<bool(std::int32_t)>& exists, std::int32_t& interval, IdList& jids,
                   wxString& message);

// The largest job interval the dialog accepts.
constexpr long kMaxJobIntervalMs = 9999;
