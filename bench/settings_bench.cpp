// The settings block: its codec and its XML form.
#include "driver_devmode/qvdm.h"
#include "support.h"

namespace {

void DecodeOurs(benchmark::State& state) {
    TQVDM settings;
    for (auto _ : state) {
        if (!settings.Decode()) state.SkipWithError("not decoded");
    }
}

BENCHMARK(DecodeOurs)->Name("settings/decode/ours");

}  // namespace
