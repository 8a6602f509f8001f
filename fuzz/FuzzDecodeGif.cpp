// The decoder that checks finished files, on any bytes.
#include "DecodeGif.h"
#include "GifAgreement.h"
#include "Problem.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    const std::span<const std::uint8_t> file(bytes, count);
    try {
        RequireAgreement(gif89::DecodeGif(file), file);
    } catch (const gif89::Problem&) {
        // Refused, as most bytes are.
    }
    return 0;
}
