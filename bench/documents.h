// The XML documents of the benchmarks. They are generated, and are the same on every run: UTF-8
// with a declaration, and with the line breaks and indentation of the library's own writer.
#pragma once

#include <string>

namespace bench {

// The answer to a query for `printers` printers: per printer its name and port and every setting as
// an element, about 2.9 KB.
std::string PrinterResponse(int printers);

// A resource file: `strings` texts in three languages, with umlauts and accents, about 200 bytes
// per text.
std::string ResourceFile(int strings);

// The documents of the tables, made once: 20 printers (about 58 KB), 2,000 printers (about 5.8 MB),
// 5,000 strings (about 1 MB).
const std::string& SmallResponse();
const std::string& LargeResponse();
const std::string& Resources();

}  // namespace bench
