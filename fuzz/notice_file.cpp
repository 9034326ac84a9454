// Any bytes as the notice file: a listener comes to their end, and hears what is posted after.
#include "Target.h"
#include "platform/files/Files.h"
#include "platform/processes/NoticeFile.h"

#include <fstream>
#include <unistd.h>

namespace {

using namespace platform;
using fuzz::require;

constexpr char kAfter[] = "posted after the damage";

/// Reads to the end; answers whether the last notice heard was `kAfter`. Each turn takes at least the head of
/// one record, or moves to a new file.
bool readToTheEnd(NoticeTail& tail, std::size_t size)
{
    bool heardLast = false;
    for (std::size_t turn = 0; turn < size + 8; ++turn) {
        const auto batch = tail.read();
        if (!batch.notices.empty())
            heardLast = batch.notices.back().name == kAfter;
        if (!batch.more)
            return heardLast;
    }
    require(false, "the listener goes round in a circle");
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    static const fuzz::Home home;
    const std::string path = home.path / "notices";
    NoticeTail tail(path);
    require(bool(tail.startAtEnd()), "no file to work on");
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    readToTheEnd(tail, size);
    require(bool(appendNotice(path, *encodeNotice({kAfter, std::nullopt, {}}))), "cannot post");
    require(readToTheEnd(tail, size), "a notice posted after the damage is not heard");
    unlink(path.c_str());
    return 0;
}
