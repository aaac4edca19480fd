#pragma once

#include "Platform/Foundation/JSON/JSONReader.h"
#include "Platform/Foundation/JSON/TextScan.h"

// Private to the reader: what its sources want inlined, since every text and key goes through it.
namespace zqcore::platform {

[[gnu::always_inline]] inline bool JSONReader::scanString(RawText& raw) {
    raw.from = at_ + 1;
    raw.nonASCII = false;
    raw.stop = textscan::findStop<textscan::Stop::reading>(raw.from, end_, raw.nonASCII);
    if (raw.stop == end_) return corrupted("a string without end");
    if (*raw.stop != '"') return scanEscaped(raw);
    raw.to = raw.stop;
    return !raw.nonASCII || checkUTF8(raw);
}

}  // namespace zqcore::platform
