// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"

#include <vector>

namespace support {

/// Keeps the errors that would have been shown.
class CollectedErrors final : public foundation::ErrorPresenter
{
public:
    void presentError(const foundation::Error &error) override { errors.push_back(error); }

    std::vector<foundation::Error> errors;
};

} // namespace support
