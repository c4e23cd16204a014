// XML: parsing, saving and the memory of the tree, beside other parsers.
#include "documents.h"
#include "support.h"
#include "xml/xml_doc.h"

#include <pugixml.hpp>

namespace {

void ParseOurs(benchmark::State& state, const std::string& (*document)()) {
    const std::string& bytes = document();
    for (auto _ : state) {
        TXmlDoc doc;
        if (doc.Parse(bytes.data(), static_cast<int>(bytes.size())) <= 0) {
            state.SkipWithError("not parsed");
        }
    }
}

void ParsePugixml(benchmark::State& state, const std::string& (*document)()) {
    const std::string& bytes = document();
    for (auto _ : state) {
        pugi::xml_document doc;
        if (!doc.load_buffer(bytes.data(), bytes.size())) state.SkipWithError("not parsed");
    }
}

BENCHMARK_CAPTURE(ParseOurs, small, bench::SmallResponse)->Name("xml/parse_small/ours");
BENCHMARK_CAPTURE(ParsePugixml, small, bench::SmallResponse)->Name("xml/parse_small/pugixml");

}  // namespace
