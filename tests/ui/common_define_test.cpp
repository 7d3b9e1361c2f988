// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/common_define.h"

#include <gtest/gtest.h>

namespace tristop {

TEST(CommonDefine, BackgroundIsADarkGrey) {
    EXPECT_EQ(CommonDefine::backgroundColor().rgba(), qRgba(31, 31, 31, 255));
}

} // namespace tristop
