// Reply handles: what cmd_snmp_req_send_recv gives out.
//
// Answers from the image are made in blocks of a small pool; a reply that finds no block free, or is larger,
// has a block on the heap. A block that its caller never releases makes the pool smaller, and nothing worse.
#pragma once

#include <cstdint>

#include "answers/answer.h"
#include "wire/attributes.h"

namespace stpplatform {

struct Reply;

// A reply without attributes. What is added to its answer counts once the reply is complete. Null when memory
// is short.
Reply *prepare_reply();
answers::Answer &answer_of(Reply *prepared);
void complete_reply(Reply *prepared);

// A reply with a copy of well-formed attributes. Null when memory is short.
Reply *copy_reply(const void *attributes, uint32_t size);

// Null for what is no reply, or one no more.
Reply *reply_of(void *handle);

// Releases a complete or a prepared reply. What is no reply stays as it is.
void release_reply(void *handle);

// Finds the first attribute `token`. False when there is none.
bool find_attribute(Reply *reply, uint32_t token, wire::Attribute *found);

}  // namespace stpplatform
