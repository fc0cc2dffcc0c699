#pragma once

#include <cstring>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/profile_file.h"
#include "platform/registry.h"
#include "platform/usb_tree.h"

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

class CMemoryRegistryKey final : public IRegistryKey {
 public:
  explicit CMemoryRegistryKey(const tagMemoryKey& key) : key_(key) {}

  std::unique_ptr<IRegistryKey> Open(const WideString& path) override {
    const std::size_t end = path.find('\\');
    for (const tagMemoryKey& key : key_.subkeys) {
      if (EqualsIgnoringCase(WidenAscii(key.name), WideView(path).substr(0, end))) {
        CMemoryRegistryKey found(key);
        return end == WideString::npos ? std::make_unique<CMemoryRegistryKey>(key)
                                       : found.Open(path.substr(end + 1));
      }
    }
    return nullptr;
  }
  std::vector<WideString> SubkeyNames() override {
    std::vector<WideString> names;
    for (const tagMemoryKey& key : key_.subkeys) {
      names.push_back(WidenAscii(key.name));
    }
    return names;
  }
  WideString ReadText(const WideString& value) override {
    const auto found = key_.texts.find(std::string(value.begin(), value.end()));
    return found == key_.texts.end() ? WideString() : WidenAscii(found->second);
  }
  std::optional<std::uint32_t> ReadNumber(const WideString& value) override {
    const auto found = key_.numbers.find(std::string(value.begin(), value.end()));
    return found == key_.numbers.end() ? std::nullopt : std::optional(found->second);
  }

 private:
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
    return lists_devices ? std::make_unique<CSet>(*this, kind) : nullptr;
  }
  std::optional<DeviceNode> Locate(const WideString& instance_id) override {
    for (DeviceNode node = 0; node < devices.size(); ++node) {
      if (WidenAscii(devices[node].instance_id) == instance_id) {
        return node;
      }
    }
    return std::nullopt;
  }
  std::optional<DeviceNode> Parent(DeviceNode node) override {
    ++parents_asked;
    const DeviceNode parent = devices.at(node).parent;
    return parent == node ? std::nullopt : std::optional(parent);
  }
  WideString InstanceId(DeviceNode node) override { return WidenAscii(devices.at(node).instance_id); }
  WideString Service(DeviceNode node) override { return WidenAscii(devices.at(node).service); }
  std::optional<std::uint32_t> Address(DeviceNode node) override { return devices.at(node).address; }
  std::unique_ptr<IUsbDevice> OpenPrinterDevice(const WideString& path) override { return OpenPath(path); }
  std::unique_ptr<IUsbDevice> OpenHubDevice(const WideString& path) override { return OpenPath(path); }

 private:
  class CSet final : public IUsbInterfaceSet {
   public:
    CSet(CRecordedUsbTree& tree, EUsbInterface kind) {
      for (const tagRecordedInterface& entry : tree.interfaces) {
        if (entry.kind == kind) {
          entries_.push_back(&entry);
        }
      }
    }
    std::size_t Count() override { return entries_.size(); }
    WideString InstanceId(std::size_t index) override { return WidenAscii(entries_.at(index)->instance_id); }
    WideString DevicePath(std::size_t index) override { return WidenAscii(entries_.at(index)->path); }
    std::unique_ptr<IRegistryKey> OpenParameters(std::size_t index) override {
      const auto& parameters = entries_.at(index)->parameters;
      return parameters ? std::make_unique<CMemoryRegistryKey>(*parameters) : nullptr;
    }

   private:
    std::vector<const tagRecordedInterface*> entries_;
  };

  class CDevice final : public IUsbDevice {
   public:
    explicit CDevice(const tagRecordedAnswers& answers) : answers_(answers) {}
    std::size_t Ask(EUsbRequest request, std::span<const std::uint8_t> question,
                    std::span<std::uint8_t> answer) override {
      const std::string recorded = Find(request, question);
      const std::size_t size = std::min(recorded.size(), answer.size());
      std::memcpy(answer.data(), recorded.data(), size);
      return size;
    }

   private:
    std::string Find(EUsbRequest request, std::span<const std::uint8_t> question) const {
      const auto find = [](const auto& map, const auto& key) {
        const auto found = map.find(key);
        return found == map.end() ? std::string() : found->second;
      };
      switch (request) {
        case EUsbRequest::kPrinterDeviceId:
          return answers_.device_id;
        case EUsbRequest::kNodeInformation:
          return answers_.node_information;
        case EUsbRequest::kConnectionInformation:
          return find(answers_.connections, std::uint32_t{question[0]});
        case EUsbRequest::kConnectionDescriptor:
          return find(answers_.strings, std::tuple(std::uint32_t{question[0]}, int{question[6]},
                                                   question[8] | question[9] << 8));
      }
      return {};
    }

    const tagRecordedAnswers& answers_;
  };

  std::unique_ptr<IUsbDevice> OpenPath(const WideString& path) {
    const auto found = answers.find(std::string(path.begin(), path.end()));
    return found == answers.end() ? nullptr : std::make_unique<CDevice>(found->second);
  }
};

}  // namespace tavira::test
