// The settings block: its codec, and its fields as XML elements.
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>

#include "driver_devmode/field_map.h"
#include "driver_devmode/qvdm.h"
#include "support.h"

namespace {

struct Blocks {
    int taken = -1;
    int dropped = -1;
};

// What the program settings_memory counts, by operation.
const Blocks& BlocksOf(const std::string& operation) {
    static const std::map<std::string, Blocks> counted = [] {
        std::map<std::string, Blocks> table;
        const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
        std::FILE* const program = popen((folder / "settings_memory").c_str(), "r");
        char name[64];
        Blocks blocks;
        while (program != nullptr &&
               std::fscanf(program, "%63s %d %d", name, &blocks.taken, &blocks.dropped) == 3) {
            table[name] = blocks;
        }
        if (program != nullptr) pclose(program);
        return table;
    }();
    static const Blocks none;
    const auto at = counted.find(operation);
    return at == counted.end() ? none : at->second;
}

// Time per field, and blocks of memory per operation.
void Report(benchmark::State& state, int fields, const std::string& operation) {
    using benchmark::Counter;
    state.counters["field_ns"] =
        Counter(fields * 1e-9, Counter::kIsIterationInvariantRate | Counter::kInvert);
    if (operation.empty()) return;
    const Blocks& blocks = BlocksOf(operation);
    if (blocks.taken < 0) state.SkipWithError("settings_memory did not run");
    state.counters["blocks"] = blocks.taken;
    state.counters["dropped_blocks"] = blocks.dropped;
}

int LeavesBelow(const TXmlNode& node) {
    int leaves = 0;
    for (int i = 0; i < node.ChildCount(); ++i) {
        const TXmlNode& child = *node.GetChild(i);
        leaves += child.ChildCount() == 0 ? 1 : LeavesBelow(child);
    }
    return leaves;
}

void Decode(benchmark::State& state) {
    TQVDM settings;
    for (auto _ : state) {
        if (!settings.Decode()) state.SkipWithError("not decoded");
    }
    Report(state, 5, "decode");
}

void Encode(benchmark::State& state) {
    TQVDM settings;
    for (auto _ : state) {
        if (!settings.Encode()) state.SkipWithError("not encoded");
    }
    Report(state, 5, "encode");
}

void ToXml(benchmark::State& state) {
    TQVDM settings;
    int leaves = 0;
    for (auto _ : state) {
        TXmlNode node;
        settings.ToXmlNode(&node);
        if (leaves == 0) leaves = LeavesBelow(node);
    }
    Report(state, leaves, "to_xml");
}

// The elements of all fields `times` times over.
void FromXml(benchmark::State& state, int times, const std::string& operation) {
    TQVDM settings;
    TXmlNode elements;
    for (int i = 0; i < times; ++i) settings.ToXmlNode(elements.AddChild(TEXT("part")));
    const int leaves = LeavesBelow(elements);
    for (auto _ : state) {
        for (int i = 0; i < times; ++i) {
            TXmlNode previous;
            settings.FromXmlNode(elements.GetChild(i), &previous);
            if (previous.ChildCount() == 0) state.SkipWithError("nothing set");
        }
    }
    Report(state, leaves, operation);
}

// Of a block that ends behind `fields` of its 34 public fields.
void PublicToXml(benchmark::State& state, int size, int fields) {
    QV_DEVMODE block;
    block.dmSize = static_cast<WORD>(size);
    for (auto _ : state) {
        TXmlNode node;
        DevModeToXmlNode(&block, &node);
        if (node.ChildCount() != fields) state.SkipWithError("other fields");
    }
    Report(state, fields, fields == 34 ? "public_to_xml" : "");
}

void FromXmlAll(benchmark::State& state) {
    FromXml(state, 1, "from_xml");
}
void PublicAll(benchmark::State& state) {
    PublicToXml(state, 220, 34);
}
void PublicHalf(benchmark::State& state) {
    PublicToXml(state, 98, 17);
}

BENCHMARK(Decode)->Name("settings/decode/ours");
BENCHMARK(Encode)->Name("settings/encode/ours");
BENCHMARK(ToXml)->Name("settings/to_xml/ours");
BENCHMARK(FromXmlAll)->Name("settings/from_xml/ours");
BENCHMARK(PublicAll)->Name("settings/public_to_xml/ours");
BENCHMARK(PublicHalf)->Name("settings/public_to_xml/half");

}  // namespace
