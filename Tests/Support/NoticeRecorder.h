#pragma once

#include "Foundation/NotificationCenter.h"

#include <string>
#include <vector>

namespace stemvault {

/// Records the notices of one name during its lifetime.
class NoticeRecorder {
public:
    explicit NoticeRecorder(const std::string& name)
    {
        NotificationCenter::defaultCenter().addObserver(
            this, name, [this](const Notification& notice) { notices.push_back(notice); });
    }
    ~NoticeRecorder() { NotificationCenter::defaultCenter().removeObserver(this); }
    NoticeRecorder(const NoticeRecorder&) = delete;
    NoticeRecorder& operator=(const NoticeRecorder&) = delete;

    std::vector<Notification> notices;
};

} // namespace stemvault
