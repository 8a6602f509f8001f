// A folder that lives as long as one test.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string name = std::filesystem::temp_directory_path() / "gif89-test-XXXXXX";
        folder = mkdtemp(name.data());
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    std::string Path(const std::string& name = {}) const {
        return name.empty() ? folder : folder / name;
    }

    /// Writes a file of that name here and returns its path.
    std::string Write(const std::string& name, const std::string& content) const {
        std::ofstream(Path(name), std::ios::binary) << content;
        return Path(name);
    }
    std::string Read(const std::string& name) const {
        std::ifstream file(Path(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }
    std::vector<std::uint8_t> ReadBytes(const std::string& name) const {
        const std::string content = Read(name);
        return {content.begin(), content.end()};
    }

    /// Names of everything in the folder, hidden or not, sorted.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

  private:
    std::filesystem::path folder;
};
