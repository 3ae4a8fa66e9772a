#pragma once
// The array max-heap of the dispatcher queue, by `priority` alone, with the sift rules of
// the standard library's push_heap/pop_heap: the push sift stops at the first parent of
// greater or equal priority; the pop moves the hole from the root down to a leaf, always
// to the child of greater priority and to the right child when both are equal, and then
// sifts the former last element up from there. Written out so that the order of equal
// priorities doesn't depend on the standard library in use.

#include <cstddef>
#include <utility>
#include <vector>

namespace zuvTaskHeap {

namespace detail {

template <typename Record>
void siftUp(std::vector<Record>& heap, std::size_t hole, std::size_t top, Record value) {
    while (hole > top) {
        std::size_t parent = (hole - 1) / 2;
        if (!(heap[parent].priority < value.priority)) break;
        heap[hole] = std::move(heap[parent]);
        hole = parent;
    }
    heap[hole] = std::move(value);
}

}  // namespace detail

template <typename Record>
void push(std::vector<Record>& heap, Record record) {
    heap.push_back(std::move(record));
    std::size_t hole = heap.size() - 1;
    Record value = std::move(heap[hole]);
    detail::siftUp(heap, hole, 0, std::move(value));
}

// Removes and returns element 0, the record of highest priority. The heap must not be empty.
template <typename Record>
Record pop(std::vector<Record>& heap) {
    const std::size_t size = heap.size();
    if (size > 1) {
        const std::size_t length = size - 1;  // the heap without its last slot
        Record last = std::move(heap[length]);
        heap[length] = std::move(heap[0]);
        std::size_t hole = 0;
        std::size_t child = 0;
        while (child < (length - 1) / 2) {
            child = 2 * (child + 1);  // right child
            if (heap[child].priority < heap[child - 1].priority) --child;
            heap[hole] = std::move(heap[child]);
            hole = child;
        }
        if ((length & 1) == 0 && child == (length - 2) / 2) {  // a lone left child at the bottom
            child = 2 * (child + 1);
            heap[hole] = std::move(heap[child - 1]);
            hole = child - 1;
        }
        detail::siftUp(heap, hole, 0, std::move(last));
    }
    Record top = std::move(heap.back());
    heap.pop_back();
    return top;
}

}  // namespace zuvTaskHeap
