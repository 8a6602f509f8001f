// Writes the manual page and the shells' completions, made of the option table, into the folders
// named on the command line, as the installation lays them out.
#include "Usage.h"

#include <filesystem>
#include <fstream>
#include <iostream>

int main(int argc, char** argv) try {
    using namespace gif89;
    if (argc != 2) throw std::runtime_error("usage: write_texts FOLDER");
    const struct {
        const char* path;
        std::string text;
    } files[] = {{"man/man1/gif89.1", ManualPage()},
                 {"bash-completion/completions/gif89", BashCompletion()},
                 {"zsh/site-functions/_gif89", ZshCompletion()},
                 {"fish/vendor_completions.d/gif89.fish", FishCompletion()}};
    for (const auto& file : files) {
        const std::filesystem::path path = std::filesystem::path(argv[1]) / file.path;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream stream(path, std::ios::binary);
        stream << file.text;
        if (!stream.flush()) throw std::runtime_error("cannot write " + path.string());
    }
} catch (const std::exception& error) {
    std::cerr << "write_texts: " << error.what() << '\n';
    return 1;
}
