// Whether this is still the process in which something was made.
#pragma once

namespace platform {

/// Remembers the process that made it. In a forked child the threads of the parent are gone and its locks may
/// be held for ever, so what is used from several threads asks its mark first and takes no lock there.
///
/// It costs no system call.
///
/// Ownership: a plain value.
/// Threads:   any.
/// Errors:    none.
class ProcessMark {
public:
    ProcessMark();
    /// True in a child forked from the process that made the mark.
    bool isForeign() const noexcept;

private:
    unsigned _generation;
};

} // namespace platform
