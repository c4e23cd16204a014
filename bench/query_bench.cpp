// The XML request call, file to file.
#include "qv_rtl_main/xml_request.h"
#include "support.h"

#include <fstream>

namespace {

void QueryOurs(benchmark::State& state) {
    const std::string request = bench::NewFileName();
    const std::string response = bench::NewFileName();
    std::ofstream(request) << "<?xml version=\"1.0\"?><query><global/></query>";
    const UnicodeString request_name = bench::Wide(request);
    const UnicodeString response_name = bench::Wide(response);
    for (auto _ : state) {
        if (DoXMLW(request_name.t_str(), response_name.t_str()) != 1) {
            state.SkipWithError("not answered");
        }
    }
}

BENCHMARK(QueryOurs)->Name("query/global/ours");

}  // namespace
