// An image that may hold anything: it is mapped or refused, and every question gets an answer or none, from
// within the image. Its writer does nothing meanwhile; image_writer is about one that does.
#include <fcntl.h>

#include <cstring>
#include <vector>

#include "answers/answers.h"
#include "fake_clock.h"
#include "image_file.h"
#include "image_reader.h"
#include "support/any_request.h"
#include "support/any_slot.h"
#include "support/input.h"
#include "support/require.h"

namespace wire = stpplatform::wire;
namespace answers = stpplatform::answers;

namespace {

cmd_result ask(const answers::Image &image, const fuzz::AnyRequest &request) {
  answers::Answer answer;
  const cmd_result result =
      answers::answer_request(image, request.head, request.attributes, request.size, &answer);
  fuzz::require(
      wire::attributes_are_well_formed(answer.attributes(), answer.size(), answer.attribute_count()),
      "an answer is well-formed");
  return result;
}

void rewrite(fuzz::Input *input, std::vector<uint8_t> *slot) {
  constexpr uint8_t kMost = 16;
  for (uint8_t left = input->number<uint8_t>() % kMost; left > 0; --left) {
    const fuzz::Rewrite rewrite = fuzz::any_rewrite(input, slot->size());
    std::memcpy(slot->data() + rewrite.place, &rewrite.value, sizeof rewrite.value);
  }
}

// In memory that ends where the slot does: the sanitizers see what is read behind it.
void ask_slot(fuzz::Input *input) {
  std::vector<uint8_t> slot = fuzz::any_slot(input->number<uint8_t>());
  rewrite(input, &slot);
  const answers::Image image(reinterpret_cast<const wire::ImageSlot *>(slot.data()), slot.size());
  while (!input->is_over()) {
    ask(image, fuzz::any_request(input));
  }
}

// What an octet of the input says of a file, bit by bit.
enum File : uint8_t { kOtherSize = 1, kOtherAnnouncement = 2, kOtherHead = 4, kNotSealed = 8 };

void overwrite_head(fuzz::Input *input, wire::ImageHead *head) {
  const size_t place = input->number<uint8_t>() % (sizeof *head / sizeof(uint32_t)) * sizeof(uint32_t);
  const auto value = input->number<uint32_t>();
  std::memcpy(reinterpret_cast<uint8_t *>(head) + place, &value, sizeof value);
}

void ask_file(fuzz::Input *input) {
  const auto file = input->number<uint8_t>();
  std::vector<uint8_t> slot = fuzz::any_slot(input->number<uint8_t>());
  rewrite(input, &slot);
  const size_t room = (file & kOtherSize) != 0 ? input->number<uint16_t>() : 0;
  const auto slot_size = static_cast<uint32_t>(wire::aligned_table(slot.size() + room));
  const StoppedClock clock;
  const ImageFile image(slot_size);
  image.publish(slot);
  image.renew_lease();
  if ((file & kOtherHead) != 0) {
    overwrite_head(input, image.head());
  }
  image.seal((file & kNotSealed) != 0 ? F_SEAL_GROW : F_SEAL_SHRINK | F_SEAL_GROW);
  stpplatform::ImageReader reader;
  const uint32_t announced = (file & kOtherAnnouncement) != 0 ? input->number<uint32_t>() : image.size();
  const char *const fault = reader.map(image.descriptor(), announced);
  fuzz::require(fault != nullptr || (announced == image.size() && (file & kNotSealed) == 0),
                "an image is mapped if it is whole");
  while (fault == nullptr && !input->is_over()) {
    const fuzz::AnyRequest request = fuzz::any_request(input);
    cmd_result result = CMD_OK;
    reader.read(
        wire::kMoved, stpplatform::Vouching::kNow,
        [&request](const answers::Image &view) { return ask(view, request); }, &result);
  }
  reader.unmap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  if (input.number<uint8_t>() % 2 == 0) {
    ask_slot(&input);
  } else {
    ask_file(&input);
  }
  return 0;
}
