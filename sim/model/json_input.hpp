// SPDX-License-Identifier: MIT
// The JSON gate lives in common/; qdsh still reaches it under this name.
#pragma once
#include "../../common/json_input.hpp"
