#pragma once

#include "Platform/Application.h"
#include "StemvaultConnect/ServiceProvider.h"

namespace stemvault {

/// Makes and connects the long-lived objects, in a fixed order, and stops what runs by itself.
class AppDelegate : public ApplicationDelegate {
public:
    void applicationDidFinishLaunching() override;
    void applicationWillTerminate() override;

private:
    ServiceProvider serviceProvider;
    bool isTerminating = false;
};

} // namespace stemvault
