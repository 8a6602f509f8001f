#include "Cursors.h"

#include "BigEndian.h"
#include "EventSource.h"
#include "ResourceManager.h"

#include <algorithm>
#include <deque>
#include <mutex>

namespace {

/// A cursor and the master pointer that its handle is the address of.
struct KeptCursor {
    explicit KeptCursor(const Cursor& content) : cursor(content) {}
    KeptCursor(const KeptCursor&) = delete;
    KeptCursor& operator=(const KeptCursor&) = delete;

    Cursor cursor;
    Cursor* master = &cursor;
};

// Data and mask of 16 rows each, hot spot.
constexpr Size kResourceBytes = 32 + 32 + 4;

Cursor DecodeCursor(const std::uint8_t* bytes) {
    Cursor cursor;
    for (std::size_t row = 0; row < 16; ++row) {
        cursor.data[row] = GetBE<std::uint16_t>(bytes + row * 2);
        cursor.mask[row] = GetBE<std::uint16_t>(bytes + 32 + row * 2);
    }
    cursor.hotSpot = {GetBE<std::int16_t>(bytes + 64), GetBE<std::int16_t>(bytes + 66)};
    return cursor;
}

/// Handles stay valid although the resource's file may be closed, so cursors are kept for good;
/// equal ones once, so that asking again and again takes no memory.
CursHandle Keep(const Cursor& cursor) {
    static std::mutex& lock = *new std::mutex;
    static std::deque<KeptCursor>& kept = *new std::deque<KeptCursor>;
    const std::lock_guard guard(lock);
    const auto found = std::find_if(kept.begin(), kept.end(),
                                    [&](const KeptCursor& each) { return each.cursor == cursor; });
    return found != kept.end() ? &found->master : &kept.emplace_back(cursor).master;
}

void Show(const Cursor* cursor) {
    if (EventSource* const source = CurrentEventSource()) source->ShowCursor(cursor);
}

} // namespace

CursHandle GetCursor(short id) {
    const Handle resource = GetResource(FourCC("CURS"), id);
    if (!resource || GetHandleSize(resource) < kResourceBytes) return nullptr;
    return Keep(DecodeCursor(*resource));
}

void SetCursor(const Cursor* cursor) {
    if (cursor) Show(cursor);
}

void SetArrowCursor() {
    Show(nullptr);
}
