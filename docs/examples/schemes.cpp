// docs/examples/schemes.cpp
#include <cstdio>

#include "Classes/AppleScript/Scheme/OrbelHelperOpenScheme.h"
#include "Classes/AppleScript/Scheme/QueryString.h"

int main() {
    using namespace zqcore;
    const auto request = OrbelHelperOpenScheme::RequestParameter::make();
    request->page = OrbelHelperOpenScheme::Page::preference;
    request->version = "1.6.0";
    std::puts(toQueryString(request->toParameters()).c_str());           // => page=preference&version=1.6.0
    std::puts(toQueryString(Value::Dictionary{{"q", "你好"}}).c_str());  // => q=%E4%BD%A0%E5%A5%BD
}
