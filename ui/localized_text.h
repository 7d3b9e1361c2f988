// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tristop {

/// The text of a key such as "IDS_OK" in the user's language; empty when the key is missing.
QString localizedText(const char *key);

} // namespace tristop
