#include "platform/registry.h"

namespace tavira {
namespace {

/** There is no registry here: every key is missing. */
class CNoRegistry final : public IRegistryKey {
 public:
  std::unique_ptr<IRegistryKey> Open(const WideString&) override { return nullptr; }
  std::vector<WideString> SubkeyNames() override { return {}; }
  WideString ReadText(const WideString&) override { return {}; }
  std::optional<std::uint32_t> ReadNumber(const WideString&) override { return std::nullopt; }
};

}  // namespace

std::unique_ptr<IRegistryKey> MakeLocalMachine() {
  return std::make_unique<CNoRegistry>();
}

}  // namespace tavira
