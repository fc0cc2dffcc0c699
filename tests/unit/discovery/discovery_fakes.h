#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/profile_file.h"
#include "platform/registry.h"
#include "platform/usb_tree.h"
#include "support/faults.h"

namespace tavira::test {

/** Setting.ini in memory: "section/key" and its value. */
class CMemoryProfile final : public IProfileFile {
 public:
  WideString ReadWide(const WideString& path, const char* section, const char* key,
                      std::size_t buffer_size) override {
    paths.insert(path);
    const auto found = values.find(std::string(section) + "/" + key);
    return WidenAscii(found == values.end() ? std::string() : found->second.substr(0, buffer_size - 1));
  }
  WideString ModulePath() override { return module_path; }

  std::map<std::string, std::string> values;
  WideString module_path = WidenAscii("C:\\Tools\\TaviraManager.dll");
  std::set<WideString> paths; /**< of every read */
};

/** A registry key in memory. */
struct tagMemoryKey {
  std::string name{};
  std::map<std::string, std::string> texts{};
  std::map<std::string, std::uint32_t> numbers{};
  std::vector<tagMemoryKey> subkeys{};
};

/** A key without values. */
inline tagMemoryKey Key(std::string name, std::vector<tagMemoryKey> subkeys) {
  return {std::move(name), {}, {}, std::move(subkeys)};
}

class CMemoryRegistryKey final : public IRegistryKey, COpenObject {
 public:
  explicit CMemoryRegistryKey(const tagMemoryKey& key) : key_(key) {}

  std::unique_ptr<IRegistryKey> Open(const WideString& path) override {
    return Strikes() ? nullptr : Find(path);
  }
  std::vector<WideString> SubkeyNames() override {
    std::vector<WideString> names;
    for (const tagMemoryKey& key : key_.subkeys) {
      names.push_back(WidenAscii(key.name));
    }
    return Strikes() ? std::vector<WideString>() : names;
  }
  WideString ReadText(const WideString& value) override {
    const auto found = key_.texts.find(std::string(value.begin(), value.end()));
    return Strikes() || found == key_.texts.end() ? WideString() : WidenAscii(found->second);
  }
  std::optional<std::uint32_t> ReadNumber(const WideString& value) override {
    const auto found = key_.numbers.find(std::string(value.begin(), value.end()));
    return Strikes() || found == key_.numbers.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  static bool Strikes() { return CFaults::Strikes(EFault::kRegistryCall); }

  std::unique_ptr<IRegistryKey> Find(const WideString& path) const {
    const std::size_t end = path.find('\\');
    for (const tagMemoryKey& key : key_.subkeys) {
      if (EqualsIgnoringCase(WidenAscii(key.name), WideView(path).substr(0, end))) {
        CMemoryRegistryKey found(key);
        return end == WideString::npos ? std::make_unique<CMemoryRegistryKey>(key)
                                       : found.Find(path.substr(end + 1));
      }
    }
    return nullptr;
  }

  const tagMemoryKey& key_;
};

/** What a recorded printer or hub answers, byte for byte. A missing answer is a refusal. */
struct tagRecordedAnswers {
  std::string device_id;
  std::string node_information;
  std::map<std::uint32_t, std::string> connections;                   /**< by port */
  std::map<std::tuple<std::uint32_t, int, int>, std::string> strings; /**< by port, index, language */
};

/** One device of a recorded tree; nodes are indices. The parent of the topmost is itself. */
struct tagRecordedDevice {
  std::string instance_id;
  std::string service;
  std::optional<std::uint32_t> address;
  DeviceNode parent = 0;
};

/** One interface of a recorded tree. */
struct tagRecordedInterface {
  EUsbInterface kind = EUsbInterface::kPrinter;
  std::string instance_id;
  std::string path;
  std::optional<tagMemoryKey> parameters{};
};

class CRecordedUsbTree final : public IUsbTree {
 public:
  std::vector<tagRecordedDevice> devices;
  std::vector<tagRecordedInterface> interfaces;
  std::map<std::string, tagRecordedAnswers> answers; /**< by path; a path without answers cannot be opened */
  bool lists_devices = true;
  int parents_asked = 0;

  std::unique_ptr<IUsbInterfaceSet> FindInterfaces(EUsbInterface kind) override {
    return lists_devices && !Strikes() ? std::make_unique<CSet>(*this, kind) : nullptr;
  }
  std::optional<DeviceNode> Locate(const WideString& instance_id) override {
    for (DeviceNode node = 0; !Strikes() && node < devices.size(); ++node) {
      if (WidenAscii(devices[node].instance_id) == instance_id) {
        return node;
      }
    }
    return std::nullopt;
  }
  std::optional<DeviceNode> Parent(DeviceNode node) override {
    ++parents_asked;
    const DeviceNode parent = devices.at(node).parent;
    return parent == node || Strikes() ? std::nullopt : std::optional(parent);
  }
  WideString InstanceId(DeviceNode node) override { return Text(devices.at(node).instance_id); }
  WideString Service(DeviceNode node) override { return Text(devices.at(node).service); }
  std::optional<std::uint32_t> Address(DeviceNode node) override {
    return Strikes() ? std::nullopt : devices.at(node).address;
  }
  std::unique_ptr<IUsbDevice> OpenPrinterDevice(const WideString& path) override { return OpenPath(path); }
  std::unique_ptr<IUsbDevice> OpenHubDevice(const WideString& path) override { return OpenPath(path); }

 private:
  static bool Strikes() { return CFaults::Strikes(EFault::kDeviceCall); }
  static WideString Text(const std::string& text) { return Strikes() ? WideString() : WidenAscii(text); }

  class CSet final : public IUsbInterfaceSet, COpenObject {
   public:
    CSet(CRecordedUsbTree& tree, EUsbInterface kind) {
      for (const tagRecordedInterface& entry : tree.interfaces) {
        if (entry.kind == kind) {
          entries_.push_back(&entry);
        }
      }
    }
    std::size_t Count() override { return Strikes() ? 0 : entries_.size(); }
    WideString InstanceId(std::size_t index) override { return Text(entries_.at(index)->instance_id); }
    WideString DevicePath(std::size_t index) override { return Text(entries_.at(index)->path); }
    std::unique_ptr<IRegistryKey> OpenParameters(std::size_t index) override {
      const auto& parameters = entries_.at(index)->parameters;
      return parameters && !Strikes() ? std::make_unique<CMemoryRegistryKey>(*parameters) : nullptr;
    }

   private:
    std::vector<const tagRecordedInterface*> entries_;
  };

  /** As strict as a driver: a request that is not as it must be is refused, and so is one without room. */
  class CDevice final : public IUsbDevice, COpenObject {
   public:
    explicit CDevice(const tagRecordedAnswers& answers) : answers_(answers) {}
    std::size_t Ask(EUsbRequest request, std::span<const std::uint8_t> question,
                    std::span<std::uint8_t> answer) override {
      std::string recorded = Strikes() ? std::string() : Find(request, question, answer.size());
      if (request == EUsbRequest::kPrinterDeviceId) {
        recorded.resize(
            std::min(recorded.size(), answer.size()));  // the one request that is answered in part
      }
      if (recorded.size() > answer.size()) {
        return 0;
      }
      std::memcpy(answer.data(), recorded.data(), recorded.size());
      return recorded.size();
    }

   private:
    std::string Find(EUsbRequest request, std::span<const std::uint8_t> question, std::size_t room) const {
      const auto find = [](const auto& map, const auto& key) {
        const auto found = map.find(key);
        return found == map.end() ? std::string() : found->second;
      };
      const auto number = [&](std::size_t at) { return question[at] | question[at + 1] << 8; };
      const auto is_zero_from = [&](std::size_t at) {
        return std::all_of(question.begin() + static_cast<std::ptrdiff_t>(at), question.end(),
                           [](std::uint8_t byte) { return byte == 0; });
      };
      switch (request) {
        case EUsbRequest::kPrinterDeviceId:
          return question.empty() ? answers_.device_id : std::string();
        case EUsbRequest::kNodeInformation:
          return question.size() == room && is_zero_from(0) ? answers_.node_information : std::string();
        case EUsbRequest::kConnectionInformation:
          return question.size() == room && is_zero_from(4)
                     ? find(answers_.connections, static_cast<std::uint32_t>(number(0)))
                     : std::string();
        case EUsbRequest::
            kConnectionDescriptor:  // standard request 6 for a string, of up to the last number's size
          return question.size() == room && number(2) == 0 && number(4) == 0x0680 && question[7] == 3 &&
                         is_zero_from(12)
                     ? find(answers_.strings,
                            std::tuple(static_cast<std::uint32_t>(number(0)), int{question[6]}, number(8)))
                           .substr(0, 12U + static_cast<std::size_t>(number(10)))
                     : std::string();
      }
      return {};
    }

    const tagRecordedAnswers& answers_;
  };

  std::unique_ptr<IUsbDevice> OpenPath(const WideString& path) {
    const auto found = answers.find(std::string(path.begin(), path.end()));
    return found == answers.end() || Strikes() ? nullptr : std::make_unique<CDevice>(found->second);
  }
};

}  // namespace tavira::test
