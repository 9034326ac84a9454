// How pictures are written beside the rows.
#include "store/PictureWriting.h"

#include "platform/run/Thread.h"

#include <memory>
#include <utility>

using platform::Result;

PictureWriting::PictureWriting(std::string directory, std::vector<platform::FileContents> files)
{
    const auto task = std::make_shared<std::packaged_task<Result<void>()>>(
        [directory = std::move(directory), files = std::move(files)]() -> Result<void> {
            if (auto made = platform::makePrivateDirectory(directory); !made)
                return made;
            return platform::writeFilesAtomically(files);
        });
    _writing = task->get_future();
    if (!platform::startThread("roster pictures", [task] { (*task)(); }))
        (*task)();
}

PictureWriting::~PictureWriting() { static_cast<void>(finish()); }

Result<void> PictureWriting::finish()
{
    if (_writing.valid())
        _written = _writing.get();
    return _written;
}
