#pragma once

#include "Platform/LoginItem.h"

#include <string>
#include <vector>

namespace stemvault {

struct FakeLoginItem : LoginItem {
    [[nodiscard]] LoginItemStatus status() const override { return current; }
    Result<void> registerItem() override { return change("register", LoginItemStatus::Enabled); }
    Result<void> unregisterItem() override
    {
        return change("unregister", LoginItemStatus::NotRegistered);
    }

    // What a test may do.
    LoginItemStatus current = LoginItemStatus::NotRegistered;
    bool isRefused = false;
    std::vector<std::string> calls;

private:
    Result<void> change(const std::string& call, LoginItemStatus status)
    {
        calls.push_back(call);
        if (isRefused)
            return Failure { "refused" };
        current = status;
        return {};
    }
};

} // namespace stemvault
