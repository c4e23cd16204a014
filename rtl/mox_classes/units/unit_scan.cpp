#include "mox_classes/units/unit_scan.h"

#include <algorithm>
#include <cstring>

#include "mox_classes/units/unit_vector.h"

namespace System {

namespace {

int Difference(WCHAR a, WCHAR b) {
    return static_cast<int>(static_cast<unsigned short>(a)) -
           static_cast<int>(static_cast<unsigned short>(b));
}

// A bit mask of the units where two texts of eight units differ or where one of them is 0.
unsigned DifferOrEnd(const WCHAR* a, const WCHAR* b) {
    const TUnits8 units(a);
    return (units.Equal(TUnits8(b)) ^ kAllUnits) | units.Equal(TUnits8(WCHAR{0}));
}

// Calls `look(i)` for each index where a group of eight of `count` units begins, until one call
// returns true. The last group ends with the last unit and may repeat units of the group before it.
// False when no call returned true, or when there are fewer than eight units.
template <class Look>
bool ForEachEight(int count, Look look) {
    if (count < kUnitStep) return false;
    int i = 0;
    for (; i <= count - kUnitStep; i += kUnitStep) {
        if (look(i)) return true;
    }
    return i < count && look(count - kUnitStep);
}

}  // namespace

int CompareUnits(const WCHAR* a, int a_length, const WCHAR* b, int b_length) {
    // The last unit that is compared is the terminator of the shorter text.
    const int last = std::min(a_length, b_length);
    int at = 0;
    const bool found = ForEachEight(last, [&](int i) {
        const unsigned stop = DifferOrEnd(a + i, b + i);
        if (stop != 0) at = i + FirstUnit(stop);
        return stop != 0;
    });
    if (!found && last >= kUnitStep) return Difference(a[last], b[last]);
    while (!found && a[at] == b[at] && a[at] != 0) ++at;
    return Difference(a[at], b[at]);
}

int FindUnitOrEnd(const WCHAR* text, int length, WCHAR unit) {
    const TUnits8 wanted(unit);
    const TUnits8 zero(WCHAR{0});
    int at = 0;
    const bool found = ForEachEight(length, [&](int i) {
        const TUnits8 units(text + i);
        const unsigned stop = (units.Same(wanted) | units.Same(zero)).Mask();
        if (stop != 0) at = i + FirstUnit(stop);
        return stop != 0;
    });
    if (!found && length >= kUnitStep) return length;
    while (!found && at < length && text[at] != unit && text[at] != 0) ++at;
    return at;
}

int FindUnits(const WCHAR* text, int length, const WCHAR* sub, int sub_length) {
    sub_length = FindUnitOrEnd(sub, sub_length, 0);
    if (sub_length == 0) return 0;
    // Compares the first and the last unit of eight candidates at a time. A 0 unit ends the text:
    // the comparison of last units meets it, except in the units in front of the first last unit;
    // those are searched here.
    const int ahead = sub_length - 1;
    if (FindUnitOrEnd(text, std::min(length, ahead), 0) < std::min(ahead, length)) return -1;
    const int candidates = length - ahead;
    const TUnits8 first(sub[0]);
    const TUnits8 last(sub[ahead]);
    const TUnits8 zero(WCHAR{0});
    const auto matches = [&](int i) {
        return std::memcmp(text + i, sub, static_cast<std::size_t>(sub_length) * sizeof(WCHAR)) ==
               0;
    };
    int at = -1;
    const bool found = ForEachEight(candidates, [&](int i) {
        const TUnits8 ends(text + i + ahead);
        const TUnitMarks end = ends.Same(zero);
        unsigned stop = ((TUnits8(text + i).Same(first) & ends.Same(last)) | end).Mask();
        for (; stop != 0; stop &= stop - 1, stop &= stop - 1) {
            const unsigned lowest = stop & (0U - stop);
            if ((end.Mask() & lowest) != 0) return true;
            if (!matches(i + FirstUnit(lowest))) continue;
            at = i + FirstUnit(lowest);
            return true;
        }
        return false;
    });
    if (found || candidates >= kUnitStep) return at;
    for (int i = 0; i < candidates && text[i + ahead] != 0; ++i) {
        if (matches(i)) return i;
    }
    return -1;
}

}  // namespace System
