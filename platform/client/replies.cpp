#include "replies.h"

#include <bit>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

namespace stpplatform {

struct Reply {
  uint32_t cookie;
  uint32_t size;  // of the attributes
  const uint8_t *attributes;
  // Where the next search begins: behind the attribute that was found last. Only where no token stands twice,
  // as in every answer from the image: the first one counts.
  uint32_t search_begin;
  bool is_answer;
};

namespace {

constexpr uint32_t kReplyCookie = 0x5354'5052;
constexpr uint32_t kPoolSize = 8;

// A reply and the memory behind it: an answer, or a copy of attributes.
struct Block {
  Reply reply;
  alignas(answers::Answer) uint8_t memory[sizeof(answers::Answer)];
};

constinit Block pool[kPoolSize] = {};
constinit uint32_t free_blocks = (1U << kPoolSize) - 1;  // a bit for each

Block *block_of(Reply *reply) { return reinterpret_cast<Block *>(reply); }

// Of a block on the heap, it may be longer than the pool's blocks have it.
uint8_t *memory_of(Block *block) { return reinterpret_cast<uint8_t *>(block) + offsetof(Block, memory); }

Block *new_block(size_t room) {
  if (room <= sizeof(Block::memory) && free_blocks != 0) {
    const auto number = static_cast<uint32_t>(std::countr_zero(free_blocks));
    free_blocks &= free_blocks - 1;
    return &pool[number];
  }
  return static_cast<Block *>(std::malloc(offsetof(Block, memory) + room));
}

void release_block(Block *block) {
  const uintptr_t offset = reinterpret_cast<uintptr_t>(block) - reinterpret_cast<uintptr_t>(pool);
  if (offset < sizeof pool) {
    free_blocks |= 1U << (offset / sizeof *block);
  } else {
    std::free(block);
  }
}

// Between two places at which attributes begin.
bool find_between(const Reply &reply, size_t begin, size_t end, uint32_t token, wire::Attribute *found) {
  wire::AttributeHead head;
  for (size_t place = begin; place < end; place += sizeof head + wire::padded(head.length)) {
    std::memcpy(&head, reply.attributes + place, sizeof head);
    if (head.token == token) {
      *found = {token, head.length, reply.attributes + place + sizeof head};
      return true;
    }
  }
  return false;
}

}  // namespace

Reply *prepare_reply() {
  Block *block = new_block(sizeof(answers::Answer));
  if (block == nullptr) {
    return nullptr;
  }
  block->reply = {kReplyCookie, 0, nullptr, 0, true};
  new (memory_of(block)) answers::Answer;
  return &block->reply;
}

answers::Answer &answer_of(Reply *prepared) {
  return *std::launder(reinterpret_cast<answers::Answer *>(memory_of(block_of(prepared))));
}

void complete_reply(Reply *prepared) {
  const answers::Answer &answer = answer_of(prepared);
  prepared->size = answer.size();
  prepared->attributes = answer.attributes();
}

Reply *copy_reply(const void *attributes, uint32_t size) {
  Block *block = new_block(size);
  if (block == nullptr) {
    return nullptr;
  }
  std::memcpy(memory_of(block), attributes, size);
  block->reply = {kReplyCookie, size, memory_of(block), 0, false};
  return &block->reply;
}

Reply *reply_of(void *handle) {
  auto *reply = static_cast<Reply *>(handle);
  return reply != nullptr && reply->cookie == kReplyCookie ? reply : nullptr;
}

void release_reply(void *handle) {
  Reply *reply = reply_of(handle);
  if (reply != nullptr) {
    reply->cookie = 0;
    release_block(block_of(reply));
  }
}

bool find_attribute(Reply *reply, uint32_t token, wire::Attribute *found) {
  if (!find_between(*reply, reply->search_begin, reply->size, token, found) &&
      !find_between(*reply, 0, reply->search_begin, token, found)) {
    return false;
  }
  if (reply->is_answer) {
    const auto *behind = static_cast<const uint8_t *>(found->value) + wire::padded(found->length);
    reply->search_begin = static_cast<uint32_t>(behind - reply->attributes);
  }
  return true;
}

}  // namespace stpplatform
