// Resource files put together byte by byte.
#pragma once

#include <string>
#include <vector>

struct RawResource {
    std::string type;
    int id;
    std::string data, name = {};
};

/// Big-endian fields, and a text with its length in front.
std::string Word(std::size_t value);
std::string Long(std::size_t value);
std::string Counted(const std::string& text);

/// A file with one type entry for each resource.
std::string ResourceFileOf(const std::vector<RawResource>& resources);
