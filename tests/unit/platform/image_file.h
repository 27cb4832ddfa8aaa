// An image as a switch publishes it, made by hand.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/stp_protocol.h"
#include "wire/image.h"
#include "wire/owned_fd.h"

using stpplatform::OwnedFd;
using stpplatform::wire::ImageHead;
using stpplatform::wire::ImageInterface;
using stpplatform::wire::ImageMstInstance;
using stpplatform::wire::ImageSettings;
using stpplatform::wire::ImageSlot;
using stpplatform::wire::ImageTreePort;

// An interface, and the VLANs that it is a member of when it is a bridge port.
struct ImagePort : ImageInterface {
  std::vector<uint16_t> vlans;
};

// What stands in one generation. What has an order in the image must be given in that order.
struct ImageContent {
  std::vector<ImagePort> interfaces;
  std::vector<ImageMstInstance> mst_instances = {};
  std::vector<ImageTreePort> tree_ports = {};
  std::vector<stpplatform::wire::ImageDesignated> designated = {};
  std::vector<std::string> refused_users = {};
  std::vector<uint16_t> disabled_vlans = {};
  uint8_t mode = STP_MODE_RAPID_PVST;
};

// The octets of a slot with that content.
std::vector<uint8_t> lay_out(const ImageContent &content);

class ImageFile {
 public:
  // Room for any content of these tests.
  static constexpr uint32_t kSlotSize = 128 * 1024;

  // Of a larger file, no more than so much at its beginning is mapped here, and nothing can be published:
  // where addresses have 32 bits, there is no room for the largest ones.
  static constexpr uint32_t kMostMapped = 16 * 1024 * 1024;

  explicit ImageFile(uint32_t slot_size = kSlotSize);
  ~ImageFile();
  ImageFile(const ImageFile &) = delete;
  ImageFile &operator=(const ImageFile &) = delete;

  int descriptor() const { return file_.get(); }
  uint32_t size() const { return size_; }
  ImageHead *head() const { return head_; }

  // The slot that readers are sent to, and all octets of it.
  ImageSlot *current() const;

  // Fills the other slot and makes it the current one, as the protocol of the image demands.
  void publish(const std::vector<uint8_t> &slot) const;
  void publish(const ImageContent &content) const { publish(lay_out(content)); }

  // Vouches for the image for as long as a lease is.
  void renew_lease() const;

  void seal(int seals) const;

 private:
  uint8_t *slot(uint64_t generation) const;

  uint32_t slot_size_;
  uint32_t size_;
  uint32_t mapped_size_;
  OwnedFd file_;
  ImageHead *head_;
};

// Interfaces of the kinds that a switch has.
ImagePort physical_port(uint32_t number, const std::vector<uint16_t> &vlans = {});
ImagePort port_channel(uint32_t number, const std::vector<uint16_t> &vlans = {});

// An instance with these VLANs.
ImageMstInstance mst_instance(uint32_t id, const std::vector<uint16_t> &vlans = {});

void add_vlan(uint8_t *bitmap, uint16_t vlan);
