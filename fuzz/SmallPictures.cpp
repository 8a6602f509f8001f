// Keeps fuzzers from huge pictures, which take their time and show nothing that small ones do not.
// The linker puts this in place of MakePicture, which every reader calls before it asks for memory
// (see CMakeLists.txt).
#include "Picture.h"
#include "Problem.h"

#define MAKE_PICTURE "_ZN5gif8911MakePictureENS_7Picture4KindExx"

namespace gif89 {

Picture MakeAnyPicture(Picture::Kind kind, long long rows,
                       long long columns) asm("__real_" MAKE_PICTURE);
Picture MakeSmallPicture(Picture::Kind kind, long long rows,
                         long long columns) asm("__wrap_" MAKE_PICTURE);

Picture MakeSmallPicture(Picture::Kind kind, long long rows, long long columns) {
    constexpr long long kMostPixels = 1 << 18;
    if (rows > 0 && columns > 0 && rows <= kLargestSide && columns <= kLargestSide &&
        rows * columns > kMostPixels)
        throw Problem("is too large to be worth a fuzzer's time");
    return MakeAnyPicture(kind, rows, columns);
}

} // namespace gif89
