#pragma once

#include "Platform/Application.h"

#include <optional>

namespace stemvault {

struct FakeApplication : Application {
    void setDelegate(ApplicationDelegate*) override { }
    void setActivationPolicy(ActivationPolicy) override { }
    void setApplicationIconImage(const Image& image) override { icon = image; }
    void setServicesProvider(ServicesProvider* provider) override { servicesProvider = provider; }
    void activateIgnoringOtherApps() override { ++activations; }
    void run() override { }
    void terminate() override { ++terminations; }

    // What a test may look at.
    std::optional<Image> icon;
    int activations = 0;
    int terminations = 0;
    ServicesProvider* servicesProvider = nullptr;
};

} // namespace stemvault
