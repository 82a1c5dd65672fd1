#include "tests/server/tds/PacketStream.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <sys/socket.h>
#include <system_error>

#include "tests/server/tds/Bytes.h"

namespace tds {
namespace {

constexpr size_t kHeader = 8;
constexpr uint8_t kEndOfMessage = 1;
// More than any batch that a test sends; a client that goes on and on does not eat up the memory.
constexpr size_t kLongestMessage = 64 * 1024 * 1024;

} // namespace

PacketStream::~PacketStream() {
  close(socket_);
}

bool PacketStream::ReadExactly(char* data, size_t size) {
  while (size > 0) {
    const ssize_t got = recv(socket_, data, size, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    data += got;
    size -= static_cast<size_t>(got);
  }
  return true;
}

std::optional<Message> PacketStream::Read() {
  Message message{};
  for (bool isFirst = true;; isFirst = false) {
    std::array<char, kHeader> header{};
    if (!ReadExactly(header.data(), header.size())) return std::nullopt;
    const auto type = static_cast<MessageType>(header[0]);
    // The length alone has its high byte first.
    const size_t length =
        static_cast<size_t>(static_cast<uint8_t>(header[2]) << 8 | static_cast<uint8_t>(header[3]));
    if (length < kHeader) throw Malformed("a packet is shorter than its header");
    if (!isFirst && type != message.type) throw Malformed("the packets of a message differ in their type");
    message.type = type;
    const size_t had = message.payload.size();
    if (had + length > kLongestMessage) throw Malformed("a message is too long");
    message.payload.resize(had + length - kHeader);
    if (!ReadExactly(&message.payload[had], length - kHeader)) return std::nullopt;
    if ((static_cast<uint8_t>(header[1]) & kEndOfMessage) != 0) return message;
  }
}

void PacketStream::Write(std::string_view bytes) {
  pending_ += bytes;
  const size_t room = packetSize_ - kHeader;
  // The last packet says that it is the last, so one is kept back.
  size_t sent = 0;
  for (; pending_.size() - sent > room; sent += room)
    SendPacket(std::string_view(pending_).substr(sent, room), false);
  pending_.erase(0, sent);
}

void PacketStream::EndReply() {
  SendPacket(pending_, true);
  pending_.clear();
  nextNumber_ = 1;
}

void PacketStream::SendPacket(std::string_view payload, bool isLast) {
  const size_t length = payload.size() + kHeader;
  std::string packet{static_cast<char>(MessageType::Reply),
                     static_cast<char>(isLast ? kEndOfMessage : 0),
                     static_cast<char>(length >> 8),
                     static_cast<char>(length),
                     0,
                     0,
                     static_cast<char>(nextNumber_++),
                     0};
  packet += payload;
  for (size_t sent = 0; sent < packet.size();) {
    const ssize_t taken = send(socket_, &packet[sent], packet.size() - sent, MSG_NOSIGNAL);
    if (taken < 0 && errno == EINTR) continue;
    if (taken < 0) throw std::system_error(errno, std::generic_category(), "send");
    sent += static_cast<size_t>(taken);
  }
}

bool PacketStream::IsInterrupted() const {
  char type = 0;
  const ssize_t got = recv(socket_, &type, 1, MSG_PEEK | MSG_DONTWAIT);
  if (got < 0) return errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR;
  return got == 0 || static_cast<MessageType>(type) == MessageType::Attention;
}

} // namespace tds
