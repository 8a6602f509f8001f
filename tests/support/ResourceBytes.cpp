#include "ResourceBytes.h"

std::string Word(std::size_t value) {
    return {static_cast<char>(value >> 8), static_cast<char>(value)};
}

std::string Long(std::size_t value) {
    return Word(value >> 16) + Word(value);
}

std::string Counted(const std::string& text) {
    return static_cast<char>(text.size()) + text;
}

std::string ResourceFileOf(const std::vector<RawResource>& resources) {
    std::string data, types = Word(resources.size() - 1), references, names;
    for (const RawResource& each : resources) {
        types += each.type + Word(0) + Word(2 + 8 * resources.size() + references.size());
        references += Word(static_cast<std::size_t>(each.id)) +
                      Word(each.name.empty() ? 0xFFFF : names.size()) + Long(data.size()) + Long(0);
        data += Long(each.data.size()) + each.data;
        if (!each.name.empty()) names += Counted(each.name);
    }
    const std::string lists = types + references;
    const std::string header = Long(16) + Long(16 + data.size()) + Long(data.size()) +
                               Long(28 + lists.size() + names.size());
    return header + data + header + Long(0) + Long(0) + Word(28) + Word(28 + lists.size()) + lists +
           names;
}
