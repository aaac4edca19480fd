#include "Classes/Core/Extension/OptionalText.h"

#include "Platform/Foundation/JSON/JSONNumber.h"

namespace zqcore::optional_text {

std::string describeReal(double value) { return describeDouble(value); }

}  // namespace zqcore::optional_text
