#pragma once

#include <array>
#include <memory>

#include "discovery/network/connect.h"
#include "discovery/network/net_platform.h"
#include "discovery/network/net_proc.h"
#include "platform/mutex.h"

namespace tavira {

/** A connection to a printer over TCP or UDP. */
class CSocketProc : public INetProc {
 public:
  explicit CSocketProc(const tagNetPlatform& platform);
  ~CSocketProc() override;
  CSocketProc(const CSocketProc&) = delete;
  CSocketProc& operator=(const CSocketProc&) = delete;

  std::uint32_t Open(const tagNetAddress* address, std::uint32_t selector) override;
  std::uint32_t Close(std::uint32_t flag) override;
  void Release() override { lock_.reset(); }
  std::uint32_t SetSendTimeout(std::uint32_t seconds) override;
  std::uint32_t SetReceiveTimeout(std::uint32_t seconds) override;
  std::uint32_t Reserved5() override { return kNetDone; }
  void SetUseConnectThread(std::uint32_t flag) override { use_connect_thread_ = flag; }
  std::uint32_t Reserved7() override { return kNetDone; }
  std::uint32_t GetLastErrorCode() override { return error_.code; }
  void GetLastErrorText(TvmgrChar* buffer) override;
  std::uint32_t Receive(void* buffer, std::uint32_t size, std::uint32_t* count) override;
  std::uint32_t ReceiveWait(void* buffer, std::uint32_t size, std::uint32_t* count,
                            std::uint32_t wait) override;
  std::uint32_t Send(const void* bytes, std::uint32_t size, std::uint32_t* count) override;
  std::uint32_t Control(std::uint32_t command, std::uint32_t* argument) override;
  void SetRemotePort(std::uint16_t port) override;
  std::uint16_t GetRemotePort() override;
  void OnClose(std::uint32_t) override {}
  void SetSpareFlag(std::uint32_t flag) override { spare_flag_ = flag; }

  /** For waiting for several connections at once; still this object's. */
  SocketHandle Socket() const { return socket_.Get(); }
  /** Whom Open has resolved, with the port that the next Send goes to. */
  const tagEndpoint& Remote() const { return remote_; }
  /** Where the last datagram came from. */
  const tagEndpoint& Sender() const { return sender_; }

 private:
  static constexpr std::size_t kConnectorCount = 5;

  std::uint32_t Resolve(const tagNetAddress& address);
  void ChooseProtocol(std::uint32_t selector);
  std::uint32_t OpenProtocol(std::uint32_t selector);
  std::uint32_t OpenDatagram(std::uint32_t selector);
  std::uint32_t OpenStream();
  std::uint32_t ConnectDirectly();
  std::uint32_t ConnectByThreads();
  bool TryConnector(CConnect& connector, bool& go_on);
  void DestroyConnectors();
  std::uint32_t WaitUntilReadable(bool wait);
  std::uint32_t SetTimeouts(std::uint32_t seconds);
  bool HasSocket() const { return socket_.IsOpen(); }
  std::uint32_t Fail(const char* text);

  const tagNetPlatform platform_;

  std::unique_ptr<CMutex> lock_;  // Open and Close; none after Release
  std::array<std::unique_ptr<CConnect>, kConnectorCount> connectors_;
  CSocket socket_;
  tagEndpoint sender_;  // of the last datagram
  tagEndpoint remote_;
  std::int32_t type_ = 0;
  std::uint32_t use_connect_thread_ = 0;
  std::uint32_t receive_wait_ms_ = 0;
  std::uint32_t spare_flag_ = 0;
  tagNetError error_;
};

}  // namespace tavira
