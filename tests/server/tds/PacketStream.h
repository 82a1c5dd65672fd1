// PacketStream: the messages of one connection, which go through its socket in packets.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tds {

enum class MessageType : uint8_t {
  Batch = 1,
  RemoteCall = 3,
  Reply = 4,
  Attention = 6, // what is running is to end
  TransactionRequest = 14,
  Login = 16,
  PreLogin = 18,
};

struct Message {
  MessageType type;
  std::string payload;
};

class PacketStream {
 public:
  // Closes the socket in the end.
  explicit PacketStream(int socket) : socket_(socket) {}
  ~PacketStream();
  PacketStream(const PacketStream&) = delete;
  PacketStream& operator=(const PacketStream&) = delete;

  // The client's next message; nullopt when it has gone. Throws Malformed.
  std::optional<Message> Read();

  // Adds to the reply, of which full packets are sent at once. Throws std::system_error when the client has
  // gone.
  void Write(std::string_view bytes);
  // Sends the rest of the reply.
  void EndReply();

  // Of the packets that are sent from the next reply on.
  void SetPacketSize(size_t size) { packetSize_ = size; }

  // Whether the client has sent an attention, or has gone, while the server has not yet answered.
  bool IsInterrupted() const;

 private:
  bool ReadExactly(char* data, size_t size);
  void SendPacket(std::string_view payload, bool isLast);

  int socket_;
  size_t packetSize_ = 4096;
  uint8_t nextNumber_ = 1; // of the packets of a reply
  std::string pending_;
};

} // namespace tds
