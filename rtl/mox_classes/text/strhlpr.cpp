#include "mox_classes/text/strhlpr.h"

namespace Strhlpr {

void UnicodeFree(UnicodeString& s) {
    s.SetLength(-1);
}
void UnicodeAssign(UnicodeString& dst, const UnicodeString& src) {
    dst = src;
}
void UnicodeFromPChar(UnicodeString& s, const char* text) {
    s = UnicodeString(text);
}
void UnicodeSetLength(UnicodeString& s, int length) {
    s.SetLength(length);
}
void UnicodeInsert(UnicodeString& s, const UnicodeString& sub, int index) {
    s.Insert(sub, index);
}
void UnicodeDelete(UnicodeString& s, int index, int count) {
    s.Delete(index, count);
}
UnicodeString UnicodeCat(const UnicodeString& a, const UnicodeString& b) {
    return a + b;
}
void UnicodeAppend(UnicodeString& a, const UnicodeString& b) {
    a += b;
}
int UnicodePos(const UnicodeString& s, const UnicodeString& sub) {
    return s.Pos(sub);
}
bool UnicodeEqual(const UnicodeString& a, const UnicodeString& b) {
    return a == b;
}
bool UnicodeLess(const UnicodeString& a, const UnicodeString& b) {
    return a < b;
}
bool UnicodeGreater(const UnicodeString& a, const UnicodeString& b) {
    return a > b;
}

}  // namespace Strhlpr
