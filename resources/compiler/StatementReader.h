// Reads the statements of one resource text; each becomes one or two resources.
#pragma once

#include "ResourceFile.h"
#include "Scanner.h"

namespace gif89 {

/// A dialog item's mention of a resource that may be stated later or in another file.
struct Reference {
    OSType type;
    std::int16_t id;
    Place place;
};

/// Reads a text to its end. Throws SourceError.
void ReadStatements(Scanner& scanner, ResourceFile& resources, std::vector<Reference>& references);

/// Reads "{ items }" into a DITL resource of that id, and its pop-ups into a CNTL each.
void ReadItems(Scanner& scanner, std::int16_t id, ResourceFile& resources,
               std::vector<Reference>& references);

/// Reads "at LEFT TOP size WIDTH HEIGHT", in points.
Rect ReadBounds(Scanner& scanner);

/// Reads "size WIDTH HEIGHT" into a rectangle with its corner there.
Rect ReadSize(Scanner& scanner, std::int16_t left, std::int16_t top);

/// What a CNTL resource holds; a new one is visible.
struct ControlTemplate {
    Rect bounds;
    int value = 0;
    int minimum = 0;
    int maximum = 1;
    int kind = 0; ///< the definition procedure's id
    std::string title;
};
Bytes WriteControl(const ControlTemplate& control);

/// The words of a table of rows with a `word`, for messages: "one of a, b, c".
template <class Rows> std::string OneOf(const Rows& rows) {
    std::string words;
    for (const auto& row : rows)
        words += (words.empty() ? "one of " : ", ") + std::string(row.word);
    return words;
}

} // namespace gif89
