// Asks the processor for the memory of the next items of a list while the current one is deleted.
#pragma once

#include "xml/xml_pair.h"

// The items of a large tree and the headers of their texts are in no cache. Fetching them early
// makes the destruction of a tree faster.
class TXmlPrefetch {
  public:
    TXmlPrefetch(TXmlPair* const* items, int count) : items_(items), count_(count) {
        for (int i = 0; i < kItems && i < count; ++i) Fetch(items[i]);
        for (int i = 0; i < kTexts && i < count; ++i) FetchText(i);
    }
    // Call it before item `i` is deleted.
    void At(int i) const {
        if (i + kItems < count_) Fetch(items_[i + kItems]);
        if (i + kTexts < count_) FetchText(i + kTexts);
    }

  private:
    static constexpr int kItems = 8;
    static constexpr int kTexts = 4;

    static void Fetch(const void* place) { __builtin_prefetch(place); }
    void FetchText(int i) const {
        const WCHAR* text = items_[i]->FValue.data();
        if (text != nullptr) Fetch(text - sizeof(System::StrRec) / sizeof(WCHAR));
    }

    TXmlPair* const* items_;
    int count_;
};
