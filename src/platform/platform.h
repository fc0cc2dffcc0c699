#pragma once

#include <memory>

#include "platform/clock.h"
#include "platform/file_system.h"
#include "platform/module_loader.h"
#include "platform/profile_file.h"
#include "platform/registry.h"
#include "platform/sockets.h"
#include "platform/text_codec.h"
#include "platform/threads.h"
#include "platform/usb_tree.h"

namespace tavira {

/** Everything that the module asks of the system it runs on. Owns its parts; they live as long as it does. */
class IPlatform {
 public:
  virtual ~IPlatform() = default;
  virtual IClock& Clock() = 0;
  virtual IModuleLoader& Modules() = 0;
  virtual ITextCodec& Text() = 0;
  virtual IFileSystem& Files() = 0;
  virtual ISockets& Sockets() = 0;
  virtual IThreads& Threads() = 0;
  virtual IUsbTree& Usb() = 0;
  virtual IRegistryKey& LocalMachine() = 0;
  virtual IProfileFile& Profiles() = 0;
};

/** The platform this program was built for; unit tests link one of their own instead. */
std::unique_ptr<IPlatform> MakePlatform();

}  // namespace tavira
