#include "LinuxDesktop/LinuxPlatform.h"
#include "Platform/Platform.h"
#include "StemvaultConnect/AppDelegate.h"

#include <memory>

// The program ignores its command line.
int main()
{
    using namespace stemvault;
    const std::unique_ptr<LinuxPlatform> desktop = LinuxPlatform::create();
    if (!desktop)
        return 0;
    Platform::install(&desktop->platform());
    Application& application = Platform::current().application;
    AppDelegate delegate;
    application.setDelegate(&delegate);
    application.setActivationPolicy(ActivationPolicy::Accessory);
    application.run();
    return 0;
}
