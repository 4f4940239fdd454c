// The hook that is told how far an operation is and may stop it.
#pragma once

namespace orvane {

struct ProgressHook {
    int (*call)(double fraction, void *data) = nullptr; // null: nobody asks; non-zero: stop
    void *data = nullptr;
};

// The hook of the process, for all operations that are given none of their own.
ProgressHook &process_progress_hook();

// While a hook is called: the name of the operation. Else null.
const char *&operation_told_of();
// What the operation waits for, as a sentence; null while it waits for nothing.
const char *&waited_for();

} // namespace orvane
