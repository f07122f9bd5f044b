// Memory for the nodes of one list.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace vxKilnBase::detail {

// Hands out nodes from blocks of growing size, the nodes of a block one after the other. Nodes that
// were given back are chained by their `next` and handed out first. The blocks live as long as this
// object.
template <class Node>
class NodeBlocks {
 public:
  NodeBlocks() = default;
  NodeBlocks(const NodeBlocks&) = delete;
  NodeBlocks& operator=(const NodeBlocks&) = delete;

  ~NodeBlocks() {
    while (blocks_ != nullptr) delete std::exchange(blocks_, blocks_->older);
  }

  // Null when there is no memory.
  Node* take() {
    if (free_ == nullptr && used_ == size() && !addBlock()) return nullptr;
    ++count_;
    return free_ != nullptr ? std::exchange(free_, free_->next) : &blocks_->nodes[used_++];
  }

  void giveBack(Node* node) {
    node->next = std::exchange(free_, node);
    --count_;
  }

  std::size_t count() const { return count_; }

 private:
  struct Block {
    Block* older;
    std::size_t size;
    std::unique_ptr<Node[]> nodes;
  };

  std::size_t size() const { return blocks_ != nullptr ? blocks_->size : 0; }

  bool addBlock() {
    const std::size_t size = std::clamp<std::size_t>(2 * this->size(), 8, 512);
    std::unique_ptr<Node[]> nodes(new (std::nothrow) Node[size]);
    if (nodes == nullptr) return false;
    Block* block = new (std::nothrow) Block{blocks_, size, std::move(nodes)};
    if (block == nullptr) return false;
    blocks_ = block;
    used_ = 0;
    return true;
  }

  Block* blocks_ = nullptr;  // the newest block, from which the older ones are reached
  std::size_t count_ = 0;    // nodes that have been handed out and not given back
  std::size_t used_ = 0;     // nodes of the newest block that have been handed out
  Node* free_ = nullptr;     // the chain of nodes that were given back
};

}  // namespace vxKilnBase::detail
