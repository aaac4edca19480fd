#pragma once

// The decoder stands beside the encoder: both work on the same type information.
#include "Platform/Foundation/JSON/JSONEncoder.h"
