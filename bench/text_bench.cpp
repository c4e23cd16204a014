// Strings: conversion, copies, growth, comparison, search and numbers.
#include "support.h"

#include <atomic>

namespace {

void CopyOurs(benchmark::State& state) {
    const UnicodeString text = bench::Wide("a text of some length");
    for (auto _ : state) {
        UnicodeString copy = text;
        benchmark::DoNotOptimize(copy);
    }
}

void CopyAtomicPair(benchmark::State& state) {
    std::atomic<int> count{1};
    for (auto _ : state) {
        benchmark::DoNotOptimize(count.fetch_add(1));
        benchmark::DoNotOptimize(count.fetch_sub(1));
    }
}

BENCHMARK(CopyOurs)->Name("text/copy/ours");
BENCHMARK(CopyAtomicPair)->Name("text/copy/atomic_pair");

}  // namespace
