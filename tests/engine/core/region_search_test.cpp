// SPDX-License-Identifier: MIT
#include "engine/core/region_search.h"

#include "tests/support/mask_art.h"

#include <gtest/gtest.h>
#include <vector>

namespace hdr {
namespace {

TEST(RegionSearch, FindsEightConnectedRegionsWithCountAndBox) {
    const std::vector<uint8_t> mask = test::maskFrom({"#...##.", //
                                                      ".#...#.", //
                                                      "......#", //
                                                      "###....", //
                                                      "#.#...#"});
    RegionSearch search(nullptr, 7, 5);
    ASSERT_TRUE(search);
    std::vector<std::vector<int>> found;
    for (int round = 0; round < 2; round++) { // a search can start again
        found.clear();
        search.start(mask.data());
        while (search.next()) {
            const Rect &box = search.box();
            found.push_back({static_cast<int>(search.cells().size()), box.x0, box.y0, box.x1, box.y1});
        }
    }
    EXPECT_EQ(found, (std::vector<std::vector<int>>{
                         {2, 0, 0, 2, 2}, {4, 4, 0, 7, 3}, {5, 0, 3, 3, 5}, {1, 6, 4, 7, 5}}));
}

} // namespace
} // namespace hdr
