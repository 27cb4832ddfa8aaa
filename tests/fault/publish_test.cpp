// What readers of the image see while publishing fails. The switch's process ends then: nobody catches it
// there.
#include <gtest/gtest.h>

#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "every_fault.h"
#include "model/switch.h"
#include "publisher/image_publisher.h"
#include "small_switches.h"
#include "sources/scenario/loader.h"
#include "support/mapped_image.h"

namespace wire = stpplatform::wire;
using namespace stpswitch;

namespace {

using faults::kMemory;
using faults::kSystem;

// The first state's number of hops, and the second's.
constexpr uint32_t kHops[] = {20, 30};

// Too large for the image of a small one: many ports in as many instances as there may be.
SwitchState large_switch() {
  constexpr int kInstances = 64;
  constexpr int kPorts = 240;
  std::string text = "switch.mode = 'mst'\nmst.max_hops = 30\n";
  for (int i = 1; i <= kInstances; ++i) {
    const std::string number = std::to_string(i);
    text.append("[[mst.instance]]\nid = ").append(number).append("\nvlans = '").append(number).append("'\n");
  }
  for (int i = 1; i <= kPorts; ++i) {
    text += "[[port]]\nnumber = " + std::to_string(i) + "\nvlans = '1-" + std::to_string(kInstances) + "'\n";
  }
  return parse_scenario(text, "large.toml");
}

// A switch in its first state, and somebody who has mapped its image.
struct Published {
  explicit Published(const SwitchState &state) : the_switch(state) {
    the_switch.on_change([this] { publisher.publish(); });
    publisher.renew_lease();
  }

  Switch the_switch;
  ImagePublisher publisher{&the_switch};
  MappedImage reader{publisher.fd(), publisher.size()};
};

uint32_t hops_in(const MappedImage &image) { return image.slot().settings.max_hops.value; }

std::vector<uint8_t> octets_of(const MappedImage &image) {
  const auto *const octets = reinterpret_cast<const uint8_t *>(&image.slot());
  return {octets, octets + image.head().slot_size};
}

// What goes wrong ends the process, with a line that says what it was.
void end_with_a_line(const std::function<void()> &work) {
  try {
    work();
  } catch (const std::exception &error) {
    EXPECT_STRNE(error.what(), "");
  }
}

class Publications : public testing::Test {
 protected:
  // Changes the switch's state for one of these while calls fail.
  void strike(const SwitchState &second) {
    faults::strike_every_call(
        {kMemory | kSystem, [this] { begin(); },
         [this, &second] { end_with_a_line([&] { published_->the_switch.replace(second); }); },
         [this] {
           expect_one_whole_state();
           published_.reset();
         }});
  }

  void begin() {
    published_.emplace(first_);
    before_ = octets_of(published_->reader);
    generation_ = published_->reader.head().generation;
    lease_end_ = published_->reader.head().lease_end;
  }

  // The reader has the first state, untouched, or the second one, or is told to look for that in another
  // image.
  void expect_one_whole_state() {
    const MappedImage &image = published_->reader;
    const MappedImage present(published_->publisher.fd(), published_->publisher.size());
    EXPECT_TRUE(image.view().is_sound());
    EXPECT_TRUE(present.view().is_sound());
    if (image.head().flags == wire::kMoved) {
      EXPECT_EQ(image.head().lease_end, 0U);
      EXPECT_EQ(hops_in(present), kHops[1]);
      EXPECT_EQ(present.head().lease_end, lease_end_);
    } else if (image.head().generation == generation_) {
      EXPECT_EQ(image.head().flags, 0U);
      EXPECT_EQ(image.head().lease_end, lease_end_);
      EXPECT_EQ(octets_of(image), before_);
      EXPECT_EQ(hops_in(image), kHops[0]);
    } else {
      EXPECT_EQ(image.head().flags, 0U);
      EXPECT_EQ(image.head().generation, generation_ + 1);
      EXPECT_EQ(hops_in(image), kHops[1]);
    }
  }

  const SwitchState first_ = mst_switch(0);
  std::optional<Published> published_;
  std::vector<uint8_t> before_;
  uint64_t generation_ = 0;
  uint64_t lease_end_ = 0;
};

TEST_F(Publications, AreWholeOrAreNot) { strike(mst_switch(1)); }

TEST_F(Publications, InALargerImageAreWholeOrAreNot) {
  const SwitchState large = large_switch();
  Published published(first_);
  published.the_switch.replace(large);
  ASSERT_EQ(published.reader.head().flags, wire::kMoved);
  strike(large);
}

TEST_F(Publications, LeaveNothingBehindWhereTheFirstOneFails) {
  faults::strike_every_call({kMemory | kSystem, [] {},
                             [this] {
                               end_with_a_line([this] {
                                 const Switch the_switch(first_);
                                 const ImagePublisher publisher(&the_switch);
                               });
                             },
                             [this] { EXPECT_EQ(hops_in(Published(first_).reader), kHops[0]); }});
}

}  // namespace
