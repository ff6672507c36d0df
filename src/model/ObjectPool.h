// ObjectPool.h: memory for the many objects of one kind, and which addresses are such objects.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

#include "HashIndex.h"
#include "bits.h"

namespace Velcor::Tavell
{

/// Memory for objects of class T, in blocks of 16 KiB that begin at multiples of that size, so that the block
/// of an address is found without searching. A block knows which of its places are in use, and a pool knows
/// its blocks: it tells the objects of a system from all other addresses without following them. A table of
/// all objects would do so, too, but take as long as making them: two look-ups in it miss the cache for every
/// new element.
///
/// Blocks come in chunks, the first of one block, each of twice as many as the one before, up to 1 MiB: small
/// circuits are made by the thousand. T derives from Pooled<T>. Objects go back one by one, and a chunk
/// without objects is given back when there is another such chunk. Every object must be gone before its pool.
template <class T> class ObjectPool
{
public:
    ObjectPool() = default;
    ObjectPool(const ObjectPool&) = delete;
    ObjectPool& operator=(const ObjectPool&) = delete;
    ~ObjectPool()
    {
        while (m_withRoom != nullptr)
            freeChunk(*m_withRoom->chunk);
    }

    /// A place for an object; it counts as one from now on. Throws std::bad_alloc.
    void* take()
    {
        if (m_withRoom == nullptr) addChunk();
        Block& block = *m_withRoom;
        if (block.chunk == m_spare) m_spare = nullptr;
        const std::size_t place = freePlaceOf(block);
        block.inUse[place / kWordBits] |= bitOf(place);
        ++block.chunk->count;
        if (++block.count == placesPerBlock()) unlink(block);
        return addressOf(block, place);
    }

    /// Gives back the place of an object that is gone.
    static void giveBack(void* object) noexcept
    {
        auto* const address = static_cast<unsigned char*>(object);
        Block& block =
            *reinterpret_cast<Block*>(address - (reinterpret_cast<std::uintptr_t>(object) - baseOf(object)));
        const std::size_t place = placeOf(block, object);
        ObjectPool& pool = *block.pool;
        if (block.count == placesPerBlock()) pool.link(block);
        block.inUse[place / kWordBits] &= ~bitOf(place);
        --block.count;
        if (--block.chunk->count == 0) pool.keepAsSpare(*block.chunk);
    }

    /// The object at an address; null when none of this pool begins there. The address is not followed.
    T* find(const void* address) const
    {
        Block* block = m_blocks.find(baseOf(address));
        if (block == nullptr) return nullptr;
        const std::size_t place = placeOf(*block, address);
        if (place >= placesPerBlock() || addressOf(*block, place) != address) return nullptr;
        if ((block->inUse[place / kWordBits] & bitOf(place)) == 0) return nullptr;
        return static_cast<T*>(addressOf(*block, place));
    }

private:
    static constexpr std::size_t kBlockSize = 16384;
    static constexpr std::size_t kMostBlocks = 64;  // of a chunk
    static constexpr std::size_t kWordBits = 64;
    static constexpr std::size_t kMostPlaces = 2 * kWordBits;

    struct Block;
    struct Chunk {
        std::unique_ptr<unsigned char[]> memory;  // one block longer than the blocks, which are aligned
        Block* first = nullptr;
        std::size_t blocks = 0;
        std::size_t count = 0;  // of objects
    };
    struct alignas(std::max_align_t) Block {
        ObjectPool* pool = nullptr;
        Chunk* chunk = nullptr;
        Block* next = nullptr;  // of the blocks with room, as previous
        Block* previous = nullptr;
        std::size_t count = 0;                                       // of objects
        std::array<std::uint64_t, kMostPlaces / kWordBits> inUse{};  // by place
    };

    static constexpr std::size_t placesPerBlock()
    {
        static_assert(alignof(T) <= alignof(Block), "objects follow one another from the end of the head");
        constexpr std::size_t kPlaces = (kBlockSize - sizeof(Block)) / sizeof(T);
        return kPlaces < kMostPlaces ? kPlaces : kMostPlaces;
    }
    static std::uint64_t bitOf(std::size_t place) { return std::uint64_t{1} << (place % kWordBits); }

    /// Address of the block that would hold an address.
    static std::uintptr_t baseOf(const void* address)
    {
        return reinterpret_cast<std::uintptr_t>(address) & ~std::uintptr_t{kBlockSize - 1};
    }
    static unsigned char* placesOf(Block& block)
    {
        return reinterpret_cast<unsigned char*>(&block) + sizeof(Block);
    }
    static void* addressOf(Block& block, std::size_t place) { return placesOf(block) + place * sizeof(T); }
    /// Place that an address of the block lies in; a large number for one in the block's head.
    static std::size_t placeOf(Block& block, const void* address)
    {
        return (reinterpret_cast<std::uintptr_t>(address) -
                reinterpret_cast<std::uintptr_t>(placesOf(block))) /
               sizeof(T);
    }
    /// The first place that is free; there is one.
    static std::size_t freePlaceOf(const Block& block)
    {
        std::size_t word = 0;
        while (block.inUse[word] == ~std::uint64_t{0})
            ++word;
        return word * kWordBits + lowestBitOf(~block.inUse[word]);
    }

    static Block& blockAfter(Block& block, std::size_t blocks)
    {
        return *reinterpret_cast<Block*>(reinterpret_cast<unsigned char*>(&block) + blocks * kBlockSize);
    }

    void addChunk()
    {
        auto chunk = std::make_unique<Chunk>();
        chunk->memory.reset(new unsigned char[(m_nextBlocks + 1) * kBlockSize]);
        unsigned char* const memory = chunk->memory.get();
        unsigned char* const firstBlock =
            memory + (kBlockSize - (reinterpret_cast<std::uintptr_t>(memory) - baseOf(memory)));
        chunk->first = reinterpret_cast<Block*>(firstBlock);
        try {
            for (; chunk->blocks < m_nextBlocks; ++chunk->blocks) {
                unsigned char* const place = firstBlock + chunk->blocks * kBlockSize;
                m_blocks.set(baseOf(place), new (place) Block);
            }
        } catch (...) {
            forgetBlocks(*chunk);
            throw;
        }
        // The last one first, so that objects follow one another in memory.
        for (std::size_t i = chunk->blocks; i-- > 0;) {
            Block& block = blockAfter(*chunk->first, i);
            block.pool = this;
            block.chunk = chunk.get();
            link(block);
        }
        m_nextBlocks = std::min(2 * m_nextBlocks, kMostBlocks);
        static_cast<void>(chunk.release());  // its blocks lead to it
    }
    /// Gives back a chunk without objects: all its blocks have room.
    void freeChunk(Chunk& chunk) noexcept
    {
        // The analyzer follows a chunk without blocks, which the pool would find a second time; there is none.
        // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete)
        const std::unique_ptr<Chunk> owner(&chunk);
        for (std::size_t i = 0; i < chunk.blocks; ++i)
            unlink(blockAfter(*chunk.first, i));
        forgetBlocks(chunk);
    }
    void forgetBlocks(const Chunk& chunk) noexcept
    {
        for (std::size_t i = 0; i < chunk.blocks; ++i)
            m_blocks.erase(baseOf(chunk.first) + i * kBlockSize);
    }
    /// Keeps a chunk that lost its last object, in place of the one kept so far.
    void keepAsSpare(Chunk& chunk) noexcept
    {
        if (m_spare != nullptr) freeChunk(*m_spare);
        m_spare = &chunk;
    }

    /// Puts a block before the others with room, or takes it out from among them.
    void link(Block& block)
    {
        block.next = m_withRoom;
        if (m_withRoom != nullptr) m_withRoom->previous = &block;
        m_withRoom = &block;
    }
    void unlink(Block& block)
    {
        (block.previous != nullptr ? block.previous->next : m_withRoom) = block.next;
        if (block.next != nullptr) block.next->previous = block.previous;
        block.next = block.previous = nullptr;
    }

    Block* m_withRoom = nullptr;               // first of the blocks with room
    Chunk* m_spare = nullptr;                  // the chunk without objects, if there is one
    std::size_t m_nextBlocks = 1;              // of the next chunk
    HashIndex<std::uint64_t, Block> m_blocks;  // by address
};

/// Gives class T, which must be final, its memory: `new (pool) T(...)`, and an ordinary delete.
template <class T> class Pooled
{
public:
    static void* operator new(std::size_t /*size*/, ObjectPool<T>& pool) { return pool.take(); }
    static void operator delete(void* object) noexcept { ObjectPool<T>::giveBack(object); }
    /// Called when a constructor throws.
    static void operator delete(void* object, ObjectPool<T>& /*pool*/) noexcept
    {
        ObjectPool<T>::giveBack(object);
    }
};

}  // namespace Velcor::Tavell
