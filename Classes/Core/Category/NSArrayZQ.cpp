#include "Classes/Core/Category/NSArrayZQ.h"

#include "Classes/Log/Log/ZQLog.h"

namespace zqcore::array_block {

void logSameElements(const std::source_location& where) {
    ZQLogError("数组不能包含相同元素", nullptr, where);
}

}  // namespace zqcore::array_block
