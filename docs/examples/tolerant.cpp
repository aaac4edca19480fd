// docs/examples/tolerant.cpp
#include <cstdio>

#include "Classes/Core/Utility/Codable/CPOptionImpl.h"
#include "Classes/Core/Utility/Codable/JSONTool.h"

using namespace zqcore;

class Page : public JSONModel<Page> {
  public:
    CPOption<CPOptionImpl::OptionInt> count;
    CPOption<CPOptionImpl::OptionString> title;
    ZQ_FIELDS(Page, count, title)
};

int main() {
    const auto page = Page::fromJSONString(R"({"count":"12","title":7})");  // a server that isn't careful
    std::printf("%lld %s\n", static_cast<long long>(*page->count.wrappedValue),
                page->title.wrappedValue->c_str());  // => 12 7
}
