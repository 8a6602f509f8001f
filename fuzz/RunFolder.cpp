// Runs a fuzz target once over every file of the folders that are named, without a fuzzer.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count);

namespace {

std::vector<std::filesystem::path> FindFiles(int folderCount, char** folders) {
    std::vector<std::filesystem::path> files;
    for (int i = 0; i < folderCount; ++i)
        for (const auto& entry : std::filesystem::directory_iterator(folders[i]))
            if (entry.is_regular_file()) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

void Run(const std::filesystem::path& path) {
    std::printf("%s\n", path.filename().c_str());
    std::fflush(stdout); // the last name printed is that of an input that ends the program
    std::ifstream file(path, std::ios::binary);
    const std::string content(std::istreambuf_iterator<char>(file), {});
    // In a block of its very size, so that reading past its end is found.
    const auto bytes = std::make_unique<std::uint8_t[]>(content.size());
    std::copy(content.begin(), content.end(), bytes.get());
    LLVMFuzzerTestOneInput(bytes.get(), content.size());
}

} // namespace

int main(int argc, char** argv) try {
    const auto files = FindFiles(argc - 1, argv + 1);
    for (const auto& file : files) Run(file);
    std::printf("%zu inputs\n", files.size());
    return files.empty() ? 1 : 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
