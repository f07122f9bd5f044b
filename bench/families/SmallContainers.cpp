#include <algorithm>
#include <cstdint>
#include <memory_resource>
#include <numeric>
#include <random>

#include <kilnbase/util/mr_bitfield.h>
#include <kilnbase/util/mr_pool.h>

#include "families/Families.h"
#include "peers/PlainLoops.h"

namespace bench {

namespace {

const std::vector<Shape> kShapes = {{1000, 1}, {100000, 1}, {1000000, 1}};

constexpr int kPieceBytes = 32;

// One or two blocks hold all pieces, so that the heap counts for little.
int blockBytes(int pieces) {
  return std::min(kPieceBytes * pieces, 1 << 24);
}

// Each way makes a pool, takes as many pieces as there are rows, and gives everything back.
double takeFromPool(int pieces) {
  MR_Pool* pool = MR_pool_new(blockBytes(pieces));
  for (int i = 0; i < pieces; ++i) benchmark::DoNotOptimize(MR_pool_alloc(pool, kPieceBytes));
  MR_pool_free(&pool);
  return pieces;
}

double takeFromResource(int pieces) {
  std::pmr::monotonic_buffer_resource resource(static_cast<std::size_t>(blockBytes(pieces)));
  std::pmr::memory_resource* handedOver = &resource;  // as those know it who allocate
  benchmark::DoNotOptimize(handedOver);
  for (int i = 0; i < pieces; ++i) benchmark::DoNotOptimize(handedOver->allocate(kPieceBytes));
  return pieces;
}

Maker repeatedFor(double (*take)(int)) {
  return [take](const Shape& shape) {
    return contestant([take, n = shape.rows] { return take(n); },
                      [](double pieces) { return Values{pieces}; });
  };
}

// As many bits as there are rows, and their numbers in random order, ended by 0.
struct Bits {
  explicit Bits(int count) : bytes(static_cast<std::size_t>(count) / 8 + 1) {
    numbers.resize(static_cast<std::size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 1);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(3));
    numbers.push_back(0);
  }

  std::vector<std::uint8_t> bytes;
  std::vector<std::int32_t> numbers;
};

// All functions are called through pointers, as those of a shared library are.
template <auto functionToCall>
auto called() {
  auto function = functionToCall;
  benchmark::DoNotOptimize(function);
  return function;
}

template <auto toggleBit, auto isBitSet>
double toggleAndCount(Bits& bits) {
  const auto toggle = called<toggleBit>();
  const auto isSet = called<isBitSet>();
  int set = 0;
  for (const std::int32_t* n = bits.numbers.data(); *n != 0; ++n) {
    toggle(bits.bytes.data(), *n);
    set += isSet(bits.bytes.data(), *n) != 0 ? 1 : 0;
    toggle(bits.bytes.data(), *n);
  }
  return set;
}

template <auto setAll>
double setAllOf(Bits& bits) {
  called<setAll>()(bits.bytes.data(), bits.numbers.data());
  return std::accumulate(bits.bytes.begin(), bits.bytes.begin() + 1, 0.0);
}

Maker onBits(double (*run)(Bits&)) {
  return [run](const Shape& shape) {
    return contestant([run, bits = Bits(shape.rows)]() mutable { return run(bits); },
                      [](double result) { return Values{result}; });
  };
}

Limits limits(double ratio) {
  return {.named = ratio};
}

}  // namespace

void addSmallContainers(Suite& suite) {
  suite.add({"pool pieces",
             kShapes,
             {"pmr"},
             [](const Shape&) { return limits(0.6); },
             repeatedFor(takeFromPool),
             {{"pmr", repeatedFor(takeFromResource)}}});
  suite.add({"bit set, one by one",
             kShapes,
             {"loop"},
             [](const Shape&) { return limits(1.1); },
             onBits(toggleAndCount<MR_bitfield_toggle, MR_bitfield_is_set>),
             {{"loop", onBits(toggleAndCount<plainToggleBit, plainIsBitSet>)}}});
  suite.add({"bit set, a list",
             kShapes,
             {"loop"},
             [](const Shape&) { return limits(1.1); },
             onBits(setAllOf<MR_bitfield_set_multiple>),
             {{"loop", onBits(setAllOf<plainSetBits>)}}});
}

}  // namespace bench
