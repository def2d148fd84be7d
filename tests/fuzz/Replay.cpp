// kx7text fuzzing - a target without a fuzzer: goes through the files of a folder.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size);

int main(int argc, char** argv)
{
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; ++i)
        for (auto const& entry : std::filesystem::directory_iterator(argv[i]))
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (auto const& file : files) {
        std::ifstream in(file, std::ios::binary);
        std::vector<char> const text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
        // The last name is that of a failure.
        fprintf(stderr, "%s\n", file.c_str());
        // A block of the exact size, so that sanitizers see what is read after it.
        std::vector<uint8_t> const data(text.begin(), text.end());
        LLVMFuzzerTestOneInput(data.data(), data.size());
    }
    printf("%zu inputs\n", files.size());
    return files.empty();
}
