// String lists: splitting and joining.
#include "mox_classes/containers/string_list.h"
#include "support.h"

#include <vector>

namespace {

constexpr int kItems = 100000;

std::string DelimitedText() {
    std::string text;
    for (int i = 0; i < kItems; ++i) text += (i == 0 ? "item" : ",item") + std::to_string(i);
    return text;
}

void SplitOurs(benchmark::State& state) {
    const UnicodeString text = bench::Wide(DelimitedText());
    for (auto _ : state) {
        TStringList list;
        list.SetDelimitedText(text);
        if (list.GetCount() != kItems) state.SkipWithError("not split");
    }
}

void SplitJoinOurs(benchmark::State& state) {
    const UnicodeString text = bench::Wide(DelimitedText());
    for (auto _ : state) {
        TStringList list;
        list.SetDelimitedText(text);
        const UnicodeString lines = list.GetTextStr();
        if (lines.Length() != text.Length() + kItems + 1) state.SkipWithError("not joined");
    }
}

void SplitPlain(benchmark::State& state) {
    const UnicodeString source = bench::Wide(DelimitedText());
    const std::u16string text(source.t_str(), static_cast<std::size_t>(source.Length()));
    for (auto _ : state) {
        std::vector<std::u16string> items;
        for (std::size_t at = 0; at <= text.size();) {
            const std::size_t end = std::min(text.find(u',', at), text.size());
            items.push_back(text.substr(at, end - at));
            at = end + 1;
        }
        if (items.size() != kItems) state.SkipWithError("not split");
    }
}

BENCHMARK(SplitOurs)->Name("list/split/ours");
BENCHMARK(SplitPlain)->Name("list/split/u16string");
BENCHMARK(SplitJoinOurs)->Name("list/split_join/ours");
BENCHMARK(SplitPlain)->Name("list/split_join/u16string");

}  // namespace
