#include "link/port_link.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace tavira {
namespace {

constexpr const char* kLibraryFile = "Ferrolink.dll";
constexpr std::size_t kKeptCapacity = std::size_t{1} << 20;

}  // namespace

void CPortLink::Forget() {
  Close();
  entries_.reset();
  description_.reset();
}

std::int32_t CPortLink::Start() {
  Forget();
  std::unique_ptr<tagLibraryEntries> entries(new (std::nothrow) tagLibraryEntries);
  if (entries == nullptr) {
    return TVMGR_OUT_OF_MEMORY;
  }
  entries->module = modules_.Load(kLibraryFile);
  entries_ = std::move(entries);  // not before: without memory for the loading, this link was never started
  if (entries_->module == nullptr) {
    return TVMGR_PORT_LIBRARY_MISSING;
  }
  const auto find = [this](auto& entry, const char* name) {
    entry = reinterpret_cast<std::remove_reference_t<decltype(entry)>>(
        modules_.FindSymbol(entries_->module, name));
    return entry != nullptr;
  };
  entries_->ready = find(entries_->initialize, "Initialize") && find(entries_->terminate, "Terminate") &&
                    find(entries_->send_data, "SendData") && find(entries_->receive_data, "ReceiveData") &&
                    find(entries_->clear_receive_data, "ClearReceiveData") &&
                    find(entries_->get_port_com_index, "GetPortComIndex");
  return entries_->ready ? TVMGR_OK : TVMGR_PORT_LIBRARY_MISSING;
}

std::int32_t CPortLink::Open(const tagPortDescription* description) {
  if (!IsStarted()) {
    return TVMGR_NOT_INITIALIZED;
  }
  if (description == nullptr) {
    description = description_.get();
  }
  if (description == nullptr) {
    return TVMGR_BAD_ARGUMENT;
  }
  const std::int32_t result = IsReady() ? entries_->initialize(description) : TVMGR_PORT_NOT_READY;
  if (result != TVMGR_OK) {
    Close();
  }
  return result;
}

void CPortLink::Close() {
  if (IsReady()) {
    entries_->terminate();
  }
}

std::int32_t CPortLink::Send(std::string_view bytes) {
  if (!IsReady()) {
    return TVMGR_PORT_NOT_READY;
  }
  if (bytes.size() > std::numeric_limits<std::uint32_t>::max()) {
    return TVMGR_BAD_ARGUMENT;  // one send cannot say so many bytes; a part of a command is worse than none
  }
  return entries_->send_data(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                             static_cast<std::uint32_t>(bytes.size()));
}

std::int32_t CPortLink::WaitingBytes(std::uint32_t& count) {
  count = 0;
  return IsReady() ? entries_->receive_data(nullptr, &count) : TVMGR_PORT_NOT_READY;
}

std::int32_t CPortLink::Receive(std::uint32_t count) {
  if (!IsReady()) {
    return TVMGR_PORT_NOT_READY;
  }
  receive_buffer_.resize(count);
  const std::int32_t result =
      entries_->receive_data(reinterpret_cast<std::uint8_t*>(receive_buffer_.data()), &count);
  receive_buffer_.resize(std::min<std::size_t>(count, receive_buffer_.size()));
  return result;
}

void CPortLink::ReleaseLargeBuffers() {
  for (std::string* buffer : {&send_buffer_, &receive_buffer_}) {
    if (buffer->capacity() > kKeptCapacity) {
      std::string().swap(*buffer);
    }
  }
}

tagPortDescription CPortLink::ExchangeDescription() const {
  tagPortDescription description;
  if (description_ != nullptr) {
    description = *description_;
  }
  description.port_type = description.address.View().empty() ? kPortTypeDirect : kPortTypeNetwork;
  return description;
}

}  // namespace tavira
