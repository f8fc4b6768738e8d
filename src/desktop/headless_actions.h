#pragma once
// The job actions of a run without a display: kinds that need a desktop
// session say so in the log instead of failing silently.

void RegisterHeadlessJobActions();
