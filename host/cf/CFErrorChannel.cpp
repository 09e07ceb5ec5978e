// The host's error channel.
#include "host/cf/CFErrorChannel.h"

#include <mutex>

namespace {
struct Channel {
    std::mutex fMutex;
    std::vector<CFMessage> fMessages;
    CFErrorChannel::Listener fListener;
};

Channel& TheChannel() {
    static Channel channel;
    return channel;
}
} // namespace

void CFErrorChannel::Report(CFMessage::Kind kind, std::string_view text) {
    Channel& channel = TheChannel();
    std::lock_guard lock(channel.fMutex);
    channel.fMessages.push_back({kind, std::string(text)});
    if (channel.fListener) {
        channel.fListener(channel.fMessages.back());
    }
}

std::vector<CFMessage> CFErrorChannel::Messages() {
    Channel& channel = TheChannel();
    std::lock_guard lock(channel.fMutex);
    return channel.fMessages;
}

void CFErrorChannel::Clear() {
    Channel& channel = TheChannel();
    std::lock_guard lock(channel.fMutex);
    channel.fMessages.clear();
}

void CFErrorChannel::SetListener(Listener listener) {
    Channel& channel = TheChannel();
    std::lock_guard lock(channel.fMutex);
    channel.fListener = std::move(listener);
}
