// Pictures on their way to the disk while the rows of their cards are written.
#pragma once

#include "platform/files/Files.h"
#include "platform/value/Error.h"

#include <future>
#include <string>
#include <vector>

/// Writes picture files on a thread of its own: they are synced one by one, which is waiting, not work.
///
/// Ownership: borrows the pictures' bytes until `finish`, which the destructor calls.
/// Threads:   one, beside its own.
/// Errors:    `finish` answers the first; files that are written by then stay.
class PictureWriting {
public:
    /// Nothing to write.
    PictureWriting() = default;
    /// Begins with the directory, which is made where it is missing. Without a thread to be had, the caller
    /// writes.
    PictureWriting(std::string directory, std::vector<platform::FileContents> files);
    ~PictureWriting();
    PictureWriting(PictureWriting&&) = default;
    PictureWriting& operator=(PictureWriting&&) = delete;

    /// Waits for the last one. True: all are on the disk. A second call answers the same.
    platform::Result<void> finish();

private:
    std::future<platform::Result<void>> _writing;
    platform::Result<void> _written;
};
