#include "ResourceFile.h"

#include <stdexcept>

namespace gif89 {

namespace {

constexpr std::uint32_t kDataOffset = 256; // 16 bytes of header, 240 for the system and others
constexpr int kTypeListOffset = 28;
constexpr int kTypeEntryBytes = 8;
constexpr int kReferenceBytes = 12;

/// The data area and, type by type, the references into it.
struct Contents {
    Bytes data;
    std::map<OSType, Bytes> references;
};

void AddReference(Contents& contents, OSType type, std::int16_t id, const Bytes& data) {
    Bytes& list = contents.references[type];
    PutWord(list, id);
    PutWord(list, -1);                                               // no name
    PutLong(list, static_cast<std::uint32_t>(contents.data.size())); // no attributes, data offset
    PutLong(list, 0);                                                // handle, when in memory
    PutLong(contents.data, static_cast<std::uint32_t>(data.size()));
    PutBytes(contents.data, data);
    // The offset has 24 bits beside the attributes.
    if (contents.data.size() > 0xFFFFFF) throw std::length_error("more than 16 MB of resources");
}

Bytes WriteTypesAndReferences(const std::map<OSType, Bytes>& references) {
    const auto types = static_cast<int>(references.size());
    Bytes list, allReferences;
    PutWord(list, types - 1);
    for (const auto& [type, typeReferences] : references) {
        const auto offset = 2 + types * kTypeEntryBytes + static_cast<int>(allReferences.size());
        PutLong(list, type);
        PutWord(list, static_cast<int>(typeReferences.size()) / kReferenceBytes - 1);
        PutWord(list, offset);
        PutBytes(allReferences, typeReferences);
    }
    PutBytes(list, allReferences);
    if (kTypeListOffset + list.size() > 0xFFFF) throw std::length_error("more than 5000 resources");
    return list;
}

} // namespace

std::string TypeName(OSType type) {
    std::string name;
    for (int shift = 24; shift >= 0; shift -= 8) name += static_cast<char>(type >> shift & 0xFF);
    return name;
}

void ResourceFile::Add(OSType type, std::int16_t id, Bytes data, const Place& place) {
    const auto [entry, isNew] = entries.try_emplace({type, id}, Entry{std::move(data), place});
    if (isNew) return;
    throw SourceError(place, "the file has a " + TypeName(type) + " " + std::to_string(id) +
                                 " already (" + entry->second.place.Text() +
                                 "), expected another id");
}

Bytes ResourceFile::Write() const {
    Contents contents;
    for (const auto& [key, entry] : entries)
        AddReference(contents, key.first, key.second, entry.data);
    const Bytes lists = WriteTypesAndReferences(contents.references);

    const auto dataLength = static_cast<std::uint32_t>(contents.data.size());
    const auto mapLength = static_cast<std::uint32_t>(kTypeListOffset + lists.size());
    Bytes header;
    PutLong(header, kDataOffset);
    PutLong(header, kDataOffset + dataLength); // map offset
    PutLong(header, dataLength);
    PutLong(header, mapLength);

    Bytes file = header;
    file.resize(kDataOffset);
    PutBytes(file, contents.data);
    PutBytes(file, header); // the map opens with a copy
    PutLong(file, 0);       // next map, when in memory
    PutWord(file, 0);       // reference number, when in memory
    PutWord(file, 0);       // attributes of the file
    PutWord(file, kTypeListOffset);
    PutWord(file, static_cast<int>(mapLength)); // name list: empty, at the end
    PutBytes(file, lists);
    return file;
}

} // namespace gif89
