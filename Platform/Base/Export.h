#pragma once

/// Opens a class or function of the libraries to users of the shared build; everything else stays hidden.
#define ZQ_EXPORT __attribute__((visibility("default")))

namespace zqcore {

/// The layer under the library: what the operating system gives, under the platform's names.
namespace platform {}

/// Its names are visible inside the library's own namespace.
using namespace platform;

}  // namespace zqcore
