// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The one place where the two threads of live work meet.
#include "media/live_queue.h"

#include <algorithm>
#include <utility>

namespace media {
namespace {

/// Pictures that wait longer come too late for anybody.
constexpr auto kLongestWait = std::chrono::seconds(1);

/// Telemetry and sound that may wait; far more than comes in a second.
constexpr std::size_t kMaxItems = 16384;

bool isPicture(LiveItem const& item)
{
    return item.packet && item.kind == StreamKind::Video;
}

}  // namespace

int LiveProgram::numberAmongKind(int index) const
{
    return static_cast<int>(std::count(kinds.begin(), kinds.begin() + index, kinds[static_cast<std::size_t>(index)]));
}

void LiveQueue::push(LiveItem item)
{
    std::lock_guard const lock(mutex_);
    makeRoom_(item);
    if (isPicture(item)) {
        untilKey_ = untilKey_ && (item.packet->flags & AV_PKT_FLAG_KEY) == 0;
        if (untilKey_) {
            ++dropped_;
            return;
        }
    }
    items_.push_back(std::move(item));
    changed_.notify_one();
}

void LiveQueue::makeRoom_(LiveItem const& item)
{
    auto const oldest = std::find_if(items_.begin(), items_.end(), isPicture);
    if (oldest != items_.end() && item.arrival - oldest->arrival > kLongestWait) {
        dropPictures_();
    }
    if (items_.size() >= kMaxItems) {
        items_.pop_front();
    }
}

void LiveQueue::dropPictures_()
{
    auto const kept = std::remove_if(items_.begin(), items_.end(), isPicture);
    dropped_ += static_cast<std::uint64_t>(items_.end() - kept);
    items_.erase(kept, items_.end());
    untilKey_ = true;
}

std::optional<LiveItem> LiveQueue::pop(LiveTime until)
{
    std::unique_lock lock(mutex_);
    changed_.wait_until(lock, until, [this] { return !items_.empty() || closed_; });
    if (items_.empty()) {
        return std::nullopt;
    }
    LiveItem item = std::move(items_.front());
    items_.pop_front();
    return item;
}

void LiveQueue::close(std::string reason)
{
    std::lock_guard const lock(mutex_);
    closed_ = true;
    failure_ = std::move(reason);
    changed_.notify_one();
}

bool LiveQueue::ended() const
{
    std::lock_guard const lock(mutex_);
    return closed_ && items_.empty();
}

std::string LiveQueue::failure() const
{
    std::lock_guard const lock(mutex_);
    return failure_;
}

std::uint64_t LiveQueue::dropped() const
{
    std::lock_guard const lock(mutex_);
    return dropped_;
}

}  // namespace media
