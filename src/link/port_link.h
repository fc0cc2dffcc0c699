#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "link/port_description.h"
#include "platform/module_loader.h"

namespace tavira {

/** What Ferrolink.dll exports. `ready` is set only when all six were found. */
struct tagLibraryEntries {
  void* module = nullptr;
  bool ready = false;
  void* get_port_com_index = nullptr;
  std::int32_t (*initialize)(const tagPortDescription*) = nullptr;
  std::int32_t (*terminate)() = nullptr;
  std::int32_t (*send_data)(const std::uint8_t*, std::uint32_t) = nullptr;
  std::int32_t (*receive_data)(std::uint8_t*, std::uint32_t*) = nullptr;
  void* clear_receive_data = nullptr;
};

/**
 * The loaded port library, the chosen printer, and the two byte buffers of one exchange.
 *
 * Nothing stays open between exchanges: open, exchange, close. The library is never unloaded (it may have
 * threads of its own); destroying the link only terminates it.
 */
class CPortLink {
 public:
  explicit CPortLink(IModuleLoader& modules) : modules_(modules) {}
  ~CPortLink() { Forget(); }
  CPortLink(const CPortLink&) = delete;
  CPortLink& operator=(const CPortLink&) = delete;

  /** Loads Ferrolink.dll and looks up its entry points. 0, −3, or −5 when it or one of the six is missing. */
  std::int32_t Start();

  /**
   * Opens the port with `description`, or with the stored one when that is null. 0, −2 never started, −7 no
   * description at all, −1 library incomplete, or the library's own code. Closed again after every failure.
   */
  std::int32_t Open(const tagPortDescription* description);

  /** Ends what Open began. The library's own result says nothing and is ignored. */
  void Close();

  /** −1 when the library is incomplete, −7 for 4 GiB or more, else its own result. */
  std::int32_t Send(std::string_view bytes);

  /** How many answer bytes wait (0: none yet). −1 when the library is incomplete, else its own result. */
  std::int32_t WaitingBytes(std::uint32_t& count);

  /**
   * Copies the waiting `count` bytes, or as many as the library delivers, into the receive buffer. Results as
   * WaitingBytes. Throws std::bad_alloc.
   */
  std::int32_t Receive(std::uint32_t count);

  bool IsStarted() const { return entries_ != nullptr; }

  /** A copy of the stored description, or a fresh one, with the port type that its address calls for. */
  tagPortDescription ExchangeDescription() const;

  const tagPortDescription* StoredDescription() const { return description_.get(); }
  void StoreDescription(std::unique_ptr<tagPortDescription> description) {
    description_ = std::move(description);
  }

  std::string& SendBuffer() { return send_buffer_; }
  std::string& ReceiveBuffer() { return receive_buffer_; }

  /** Empties a buffer that has grown past 1 MiB and gives its memory back: for the end of an operation. */
  void ReleaseLargeBuffers();

 private:
  bool IsReady() const { return entries_ != nullptr && entries_->ready; }
  void Forget();

  IModuleLoader& modules_;
  std::unique_ptr<tagLibraryEntries> entries_;
  std::unique_ptr<tagPortDescription> description_;
  std::string send_buffer_;
  std::string receive_buffer_;
};

}  // namespace tavira
