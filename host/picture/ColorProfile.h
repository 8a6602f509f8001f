// Brings pictures with an embedded colour profile to sRGB.
#pragma once

#include "Picture.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace gif89 {

/// Converts the picture's colours to sRGB with the ICC profile in notes.profile, which is taken
/// out, and notes in profileUse and profileName what came of it. Without a profile there it does
/// nothing and leaves the notes alone, so that a reader may settle the matter itself.
///
/// RGB profiles serve every picture, grey ones those whose every colour is grey, which they stay.
/// Of an indexed picture only the `colors` entries of the table change, never their order or the
/// indices; opacities never change. A profile that moves no channel of any color by more than one
/// level counts as sRGB itself (ProfileUse::same) and costs no pixel. One that is damaged or meant
/// for something else is ProfileUse::unusable, and the picture stays as it is.
///
/// Relative colorimetric intent with black point compensation, as viewers do it.
/// Source: ICC.1:2010 (profile version 4.3).
void ApplyProfile(Picture& picture);

/// How a file stores inks.
enum class InkStorage : std::uint8_t {
    ink,  ///< 255 is full ink, 0 none
    paper ///< what is left of the paper: 0 is full ink, 255 none
};

/// Turns rows of cyan, magenta, yellow and black into RGB as a reader meets them.
///
/// A reader sets notes.profile before it makes the converter, and hands over each row:
///
///     InkConverter converter(picture.notes, InkStorage::ink);
///     for (each row) converter.ConvertRow(inks.data(), columns, place);
class InkConverter {
  public:
    /// Takes the profile out of the notes and sets `inks`, profileUse and profileName. With a
    /// usable CMYK profile there (ProfileUse::converted) rows become sRGB by it, in the way of
    /// ApplyProfile; otherwise by plain multiplication of what each ink leaves of the paper.
    InkConverter(InputNotes& notes, InkStorage inkStorage);

    /// @param inks   4 x pixels bytes: cyan, magenta, yellow, black
    /// @param pixels in the row, at least 0
    /// @param rgb    3 x pixels bytes; must not overlap inks
    ///
    /// Throws nothing, and so may be called where a library jumps over it.
    void ConvertRow(const std::uint8_t* inks, std::size_t pixels, std::uint8_t* rgb) const;

  private:
    InkStorage storage;
    std::unique_ptr<void, void (*)(void*)> transform; // null for multiplication
};

} // namespace gif89
