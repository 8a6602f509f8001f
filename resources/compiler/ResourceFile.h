// The resources of one file, collected and then written in the classic layout.
#pragma once

#include "Bytes.h"
#include "SourceError.h"

#include <map>
#include <utility>

namespace gif89 {

class ResourceFile {
  public:
    /// Adds a resource that was stated at `place`; throws SourceError when its type and id are
    /// taken.
    void Add(OSType type, std::int16_t id, Bytes data, const Place& place);

    bool Has(OSType type, std::int16_t id) const { return entries.contains({type, id}); }

    /// The whole file, ordered by type and id so that equal resources make equal bytes. Throws
    /// std::length_error when they are more than the layout's offsets can reach.
    Bytes Write() const;

  private:
    struct Entry {
        Bytes data;
        Place place;
    };
    std::map<std::pair<OSType, std::int16_t>, Entry> entries;
};

/// A type as people write it: its four characters.
std::string TypeName(OSType type);

} // namespace gif89
