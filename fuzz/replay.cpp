// The main of a fuzz target outside a fuzzing build: runs it once over every file of the folders named.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

std::vector<std::filesystem::path> filesBelow(const char* folder)
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

bool replay(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(stream), {});
    if (stream.bad() || !stream.is_open()) {
        std::fprintf(stderr, "%s cannot be read\n", file.c_str());
        return false;
    }
    // Named first, so that the last line before a crash tells which seed it was.
    std::printf("%s, %zu bytes\n", file.c_str(), bytes.size());
    std::fflush(stdout);
    // A buffer of the exact size: a reader that goes one byte too far is seen by AddressSanitizer.
    const std::vector<std::uint8_t> exact(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    std::size_t replayed = 0;
    try {
        for (int at = 1; at < argc; ++at)
            for (const auto& file : filesBelow(argv[at])) {
                if (!replay(file))
                    return 1;
                ++replayed;
            }
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
    std::printf("%zu seeds replayed\n", replayed);
    // An empty folder would test nothing and look green.
    return replayed == 0 ? 1 : 0;
}
