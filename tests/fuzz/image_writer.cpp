// A reader of the image beside a writer that keeps to no protocol: between any two loads of the reader's,
// words of the image become others. Nothing is read outside of it, answers are well-formed, and whoever steps
// from one interface or instance to the next never goes back.
#include <fcntl.h>
#include <net-snmp/net-snmp-config.h>
//
#include <net-snmp/net-snmp-includes.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <vector>

#include "answers/answers.h"
#include "connection.h"
#include "fake_clock.h"
#include "image_file.h"
#include "platform/im.h"
#include "platform/pcm.h"
#include "platform/stp.h"
#include "platform/vlan_mgr.h"
#include "replies.h"
#include "support/any_request.h"
#include "support/any_slot.h"
#include "support/input.h"
#include "support/require.h"
#include "support/scripted_socket.h"

namespace wire = stpplatform::wire;
namespace answers = stpplatform::answers;

namespace {

// Rewrites words of a slot, each when the reader has loaded so many more fields.
class Writer {
 public:
  Writer(fuzz::Input *input, uint8_t *slot, size_t slot_size) : slot_(slot) {
    constexpr uint8_t kMost = 16;
    for (uint8_t left = input->number<uint8_t>() % kMost; left > 0; --left) {
      const uint32_t loads = input->number<uint8_t>();
      steps_.push_back({loads, fuzz::any_rewrite(input, slot_size)});
    }
    next_ = steps_.begin();
    present_ = this;
  }
  ~Writer() { present_ = nullptr; }
  Writer(const Writer &) = delete;
  Writer &operator=(const Writer &) = delete;

  static void before_load() {
    if (present_ != nullptr) {
      present_->write();
    }
  }

 private:
  struct Step {
    uint32_t loads;
    fuzz::Rewrite rewrite;
  };

  void write() {
    while (next_ != steps_.end() && next_->loads == loads_) {
      std::memcpy(slot_ + next_->rewrite.place, &next_->rewrite.value, sizeof next_->rewrite.value);
      loads_ = 0;
      ++next_;
    }
    ++loads_;
  }

  static Writer *present_;

  uint8_t *slot_;
  std::vector<Step> steps_;
  std::vector<Step>::const_iterator next_;
  uint32_t loads_ = 0;
};

Writer *Writer::present_ = nullptr;

// In memory that ends where the slot does: the sanitizers see what is read behind it.
void ask_slot(fuzz::Input *input) {
  std::vector<uint8_t> slot = fuzz::any_slot(input->number<uint8_t>());
  const Writer writer(input, slot.data(), slot.size());
  const answers::Image image(reinterpret_cast<const wire::ImageSlot *>(slot.data()), slot.size());
  while (image.is_sound() && !input->is_over()) {
    const fuzz::AnyRequest request = fuzz::any_request(input);
    answers::Answer answer;
    answers::answer_request(image, request.head, request.attributes, request.size, &answer);
    fuzz::require(
        wire::attributes_are_well_formed(answer.attributes(), answer.size(), answer.attribute_count()),
        "an answer is well-formed");
  }
}

// What the managers answer.

void step_to_next_interface(fuzz::Input *input) {
  const auto if_index = input->number<uint32_t>();
  uint32_t next = 0;
  if (im_get_next_ifindex(if_index, &next) == CMD_OK) {
    fuzz::require(next == 0 || next > if_index, "the next interface is behind the one asked for");
  }
}

void ask_about_interface(fuzz::Input *input) {
  const auto if_index = input->number<uint32_t>();
  im_oper_status_entry status{};
  status.if_index = if_index;
  im_get_ifindex_oper_status_list(&status, 1);
  check_if_valid_base_port_ifindex(if_index, BASE_PORT_ACTIVE);
  pcm_port_channel channel;
  pcm_get_pc_for_port(if_index, &channel);
  uint16_t port = 0;
  if (stp_ifindex2dot1dportnum(if_index, &port) == CMD_OK) {
    fuzz::require(port != 0, "a bridge port has a number");
  }
}

void ask_about_port(fuzz::Input *input) {
  uint32_t if_index = 0;
  stp_dot1dportnum2ifindex(input->number<uint16_t>(), &if_index);
}

void ask_about_vlans(fuzz::Input *input) {
  constexpr uint32_t kOctetBits = 8;
  stp_vlan_bmp vlans{STP_VLAN_BITMAP_SIZE, {}};
  const uint16_t vlan = input->number<uint16_t>() % (STP_VLAN_BITMAP_SIZE * kOctetBits);
  vlans.bits[vlan / kOctetBits] = input->number<uint8_t>();
  const std::unique_ptr<vlan_mgr_baseport_bmp, decltype(&std::free)> members(
      vlan_mgr_get_baseport_membership_range(&vlans), &std::free);
  if (members) {
    fuzz::require(std::all_of(members->bits + wire::kPortNumbers / kOctetBits, std::end(members->bits),
                              [](uint8_t octet) { return octet == 0; }),
                  "a member of a VLAN is a bridge port");
  }
}

void step_to_next_instance(fuzz::Input *input, void *reply) {
  const auto asked = input->number<uint16_t>();
  uint16_t instance = asked;
  stp_vlan_bmp vlans{};
  if (stp_get_mst_vlan_bmp(reply, CMD_ACTION_GET_NEXT, &instance, &vlans) == CMD_OK) {
    fuzz::require(instance > asked, "the next instance is behind the one asked for");
  }
  instance = asked;
  if (stp_get_mst_vlan_bmp(reply, CMD_ACTION_GET, &instance, &vlans) == CMD_OK) {
    fuzz::require(instance == asked, "an instance is the one asked for");
  }
  stp_dot1d_bridgemib_get_mst_ctx(asked, &vlans);
}

void ask_about_instance(fuzz::Input *input) {
  const std::unique_ptr<stpplatform::Reply, decltype(&stpplatform::release_reply)> none(
      stpplatform::prepare_reply(), &stpplatform::release_reply);
  step_to_next_instance(input, none.get());
}

void ask_managers(fuzz::Input *input) {
  constexpr void (*kQuestions[])(fuzz::Input *) = {step_to_next_interface, ask_about_interface,
                                                   ask_about_port, ask_about_vlans, ask_about_instance};
  kQuestions[input->number<uint8_t>() % std::size(kQuestions)](input);
}

// A switch that greets with the image, and answers nothing.
fuzz::Arrival greet(const ImageFile &image, const wire::MessageHeader &sent) {
  if (sent.type != 0) {
    return {CMD_TIMEOUT};
  }
  fuzz::Arrival hello{CMD_OK, std::vector<uint8_t>(sizeof(wire::Hello)), image.descriptor()};
  const uint32_t size = image.size();
  std::memcpy(hello.octets.data() + offsetof(wire::Hello, image_size), &size, sizeof size);
  fuzz::put_header(&hello.octets, wire::MessageType::kHello, 0);
  return hello;
}

void ask_library(fuzz::Input *input) {
  const std::vector<uint8_t> &slot = fuzz::any_slot(input->number<uint8_t>());
  const StoppedClock clock;
  const ImageFile image(static_cast<uint32_t>(slot.size()));
  image.publish(slot);
  image.renew_lease();
  image.seal(F_SEAL_SHRINK | F_SEAL_GROW);
  const fuzz::ScriptedSwitch the_switch(
      [&image](const wire::MessageHeader &sent) { return greet(image, sent); });
  stpplatform::connection().reset();
  const Writer writer(input, reinterpret_cast<uint8_t *>(image.current()), slot.size());
  while (!input->is_over()) {
    ask_managers(input);
  }
  stpplatform::connection().reset();
}

}  // namespace

void fuzz::before_load() { Writer::before_load(); }

extern "C" int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/) {
  netsnmp_register_loghandler(NETSNMP_LOGHANDLER_NONE, LOG_DEBUG);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  if (input.number<uint8_t>() % 2 == 0) {
    ask_slot(&input);
  } else {
    ask_library(&input);
  }
  return 0;
}
