// One run of nptests: read the documents, drive the module, render.
#pragma once

struct Options;

// Runs the command and returns its exit status. Output of the splits before
// a rejected one is still rendered.
int Run(const Options& options);
