// compile_resources [-D NAME=TEXT]... OUTPUT INPUT...
#include "CompileResources.h"

#include <cstdio>
#include <exception>
#include <fstream>

namespace {

struct Arguments {
    gif89::Definitions definitions;
    std::vector<std::string> files; ///< the output, then the inputs
};

bool ReadArguments(int count, char** words, Arguments& arguments) {
    for (int i = 1; i < count; ++i) {
        std::string word = words[i];
        if (word != "-D") {
            arguments.files.push_back(std::move(word));
            continue;
        }
        const std::string definition = ++i < count ? words[i] : "";
        const std::size_t equals = definition.find('=');
        if (equals == 0 || equals == std::string::npos) return false;
        arguments.definitions[definition.substr(0, equals)] = definition.substr(equals + 1);
    }
    return arguments.files.size() >= 2;
}

void WriteFile(const std::string& path, const gif89::Bytes& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (file) return;
    std::remove(path.c_str());
    throw std::runtime_error(path + ": the resource file cannot be written, expected room and "
                                    "permission");
}

} // namespace

int main(int count, char** words) {
    Arguments arguments;
    if (!ReadArguments(count, words, arguments)) {
        std::fputs("usage: compile_resources [-D NAME=TEXT]... OUTPUT INPUT...\n", stderr);
        return 2;
    }
    try {
        const std::vector<std::string> inputs(arguments.files.begin() + 1, arguments.files.end());
        WriteFile(arguments.files[0], gif89::CompileResources(inputs, arguments.definitions));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
