// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/pixels.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

namespace tristop {
namespace {

/// Of this size on a block is worth large pages and to be set aside.
constexpr size_t kLargeBlock = size_t{4} << 20;

/// Asks for few large pages in place of many small ones, each of which costs time when it is touched first.
/// What the system does of it is its own affair.
void preferLargePages(uint8_t *block, size_t bytes) {
    if (block == nullptr || bytes < kLargeBlock)
        return;
    const auto page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    const size_t before = (page - reinterpret_cast<uintptr_t>(block) % page) % page;
    ::madvise(block + before, (bytes - before) / page * page, MADV_HUGEPAGE);
}

/// The blocks that are set aside.
class Reserve {
public:
    static Reserve &shared() {
        static auto &reserve = *new Reserve; // blocks may be freed until the very end of the program
        return reserve;
    }

    void addUser() {
        const std::scoped_lock lock(mutex);
        ++users;
    }

    void removeUser() {
        const std::scoped_lock lock(mutex);
        if (--users == 0)
            freeBlocks();
    }

    /// False when the block is not to be kept.
    bool add(uint8_t *block) {
        const size_t bytes = ::malloc_usable_size(block);
        if (bytes < kLargeBlock)
            return false;
        const std::scoped_lock lock(mutex);
        if (users == 0 || blocks.size() == kMostBlocks)
            return false;
        blocks.push_back({block, bytes});
        return true;
    }

    /// A block of this many bytes or hardly more; null when there is none.
    uint8_t *take(size_t bytes) {
        if (bytes < kLargeBlock)
            return nullptr;
        const std::scoped_lock lock(mutex);
        const auto found = std::ranges::find_if(blocks, [bytes](const Block &block) {
            return block.bytes >= bytes && block.bytes - bytes <= bytes / 16;
        });
        if (found == blocks.end())
            return nullptr;
        uint8_t *const block = found->start;
        blocks.erase(found);
        return block;
    }

    void giveBack() {
        const std::scoped_lock lock(mutex);
        freeBlocks();
    }

    size_t size() {
        const std::scoped_lock lock(mutex);
        size_t bytes = 0;
        for (const Block &block : blocks)
            bytes += block.bytes;
        return bytes;
    }

private:
    static constexpr size_t kMostBlocks = 32;

    struct Block {
        uint8_t *start;
        size_t bytes;
    };

    Reserve() { blocks.reserve(kMostBlocks); } // to add one takes no memory

    void freeBlocks() {
        for (const Block &block : blocks)
            std::free(block.start);
        blocks.clear();
    }

    std::mutex mutex;
    std::vector<Block> blocks;
    int users = 0;
};

} // namespace

void PixelDeleter::operator()(uint8_t *pixels) const {
    if (!Reserve::shared().add(pixels))
        std::free(pixels);
}

PixelBuffer allocPixels(size_t bytes) {
    PixelBuffer block(static_cast<uint8_t *>(std::calloc(bytes > 0 ? bytes : 1, 1)));
    preferLargePages(block.get(), bytes);
    return block;
}

PixelBuffer allocUnsetPixels(size_t bytes) {
    PixelBuffer kept(Reserve::shared().take(bytes));
    return kept ? std::move(kept) : allocPixels(bytes);
}

PixelReserve::PixelReserve() {
    Reserve::shared().addUser();
}

PixelReserve::~PixelReserve() {
    Reserve::shared().removeUser();
}

void PixelReserve::giveBack() {
    Reserve::shared().giveBack();
}

size_t PixelReserve::size() {
    return Reserve::shared().size();
}

} // namespace tristop
