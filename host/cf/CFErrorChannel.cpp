// The host's error channel.
#include "host/cf/CFErrorChannel.h"

#include <mutex>
#include <unordered_set>

namespace {
struct Channel {
    std::mutex fMutex;
    std::vector<CFMessage> fMessages;
    CFErrorChannel::Listener fListener;
    std::string fSource;
    std::unordered_set<std::string> fOnce; // texts told once for the source
};

void Add(Channel& channel, CFMessage::Kind kind, std::string_view text) {
    channel.fMessages.push_back({kind, std::string(text), channel.fSource});
    if (channel.fListener) {
        channel.fListener(channel.fMessages.back());
    }
}

Channel& TheChannel() {
    static Channel channel;
    return channel;
}
} // namespace

void CFErrorChannel::Report(CFMessage::Kind kind, std::string_view text) {
    Channel& channel = TheChannel();
    std::lock_guard lock(channel.fMutex);
    Add(channel, kind, text);
}

void CFErrorChannel::ReportOnce(CFMessage::Kind kind, std::string_view text) {
    Channel& channel = TheChannel();
    std::lock_guard lock(channel.fMutex);
    if (channel.fOnce.emplace(text).second) {
        Add(channel, kind, text);
    }
}

void CFErrorChannel::SetSource(std::string_view source) {
    Channel& channel = TheChannel();
    std::lock_guard lock(channel.fMutex);
    channel.fSource = source;
    channel.fOnce.clear();
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
    channel.fOnce.clear();
}

void CFErrorChannel::SetListener(Listener listener) {
    Channel& channel = TheChannel();
    std::lock_guard lock(channel.fMutex);
    channel.fListener = std::move(listener);
}
