#include "admin/exchange_sort.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <numeric>
#include <vector>

#include "kvlib/text.h"

// What happens to equal strings: a pass brings the smallest of what is left to the front, and each smaller one that it
// meets on its way takes over the place of the one before. Of some equal strings only the first can be met, and only
// when nothing smaller stands before it; it then takes the place of the first smaller one. So they form a queue: it
// grows by each of them in their old order, and each smaller string between them sends the first to its end. Greater
// strings never come between.

namespace {

// A set of the numbers below a limit (a Fenwick tree); all takes the logarithm of the limit.
class Places {
public:
    explicit Places(std::size_t limit) : sums_(limit + 1) {}

    static Places all(std::size_t limit) {
        Places places(limit);
        for (std::size_t node = 1; node <= limit; ++node) {
            places.sums_[node] = node & (~node + 1);
        }
        return places;
    }
    void insert(std::size_t place) { add(place, 1); }
    void erase(std::size_t place) { add(place, ~std::size_t{0}); }
    // How many there are below `place`.
    std::size_t countBelow(std::size_t place) const {
        std::size_t count = 0;
        for (std::size_t node = place; node > 0; node &= node - 1) {
            count += sums_[node];
        }
        return count;
    }
    // The one that has `count` below it.
    std::size_t at(std::size_t count) const {
        std::size_t node = 0;
        for (std::size_t step = std::bit_floor(sums_.size()); step > 0; step /= 2) {
            if (node + step < sums_.size() && sums_[node + step] <= count) {
                node += step;
                count -= sums_[node];
            }
        }
        return node;
    }

private:
    void add(std::size_t place, std::size_t difference) {
        for (std::size_t node = place + 1; node < sums_.size(); node += node & (~node + 1)) {
            sums_[node] += difference;
        }
    }

    std::vector<std::size_t> sums_;
};

// Puts the places of equal strings, which are in their old order, into their new one. The queue is followed back from
// its end, when all of its slots are taken: undo the turns, then the last to come leaves.
void queueUp(std::span<std::size_t> equals, const Places& smaller, std::size_t count) {
    const std::vector<std::size_t> places(equals.begin(), equals.end());
    Places slots = Places::all(places.size());
    std::size_t first = 0;  // Where the queue begins, among the slots that are left.
    for (std::size_t size = places.size(); size > 0; --size) {
        const std::size_t next = size < places.size() ? places[size] : count;
        const std::size_t turns = smaller.countBelow(next) - smaller.countBelow(places[size - 1]);
        first = (first + size - turns % size) % size;
        const std::size_t last = (first + size - 1) % size;
        const std::size_t slot = slots.at(last);
        equals[slot] = places[size - 1];
        slots.erase(slot);
        first -= last < first ? 1 : 0;
    }
}

}  // namespace

void exchangeSort(std::span<char*> strings) {
    std::vector<std::size_t> order(strings.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [strings](std::size_t a, std::size_t b) { return strCompareCi(strings[a], strings[b]) < 0; });
    Places smaller(strings.size());
    for (auto start = order.begin(); start != order.end();) {
        const auto end = std::find_if(
            start, order.end(), [&](std::size_t place) { return strCompareCi(strings[*start], strings[place]) != 0; });
        queueUp({start, end}, smaller, strings.size());
        for (; start != end; ++start) {
            smaller.insert(*start);
        }
    }
    std::vector<char*> sorted;
    sorted.reserve(order.size());
    for (const std::size_t place : order) {
        sorted.push_back(strings[place]);
    }
    std::copy(sorted.begin(), sorted.end(), strings.begin());
}
