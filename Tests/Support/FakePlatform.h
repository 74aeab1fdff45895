#pragma once

#include "Platform/Platform.h"
#include "Support/FakeDispatch.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace stemvault {

struct FakeApplication : Application {
    void setDelegate(ApplicationDelegate*) override { }
    void setActivationPolicy(ActivationPolicy) override { }
    void setApplicationIconImage(const Image& image) override { icon = image; }
    void setServicesProvider(ServicesProvider* provider) override { servicesProvider = provider; }
    void activateIgnoringOtherApps() override { ++activations; }
    void run() override { }
    void terminate() override { }

    // What a test may look at.
    std::optional<Image> icon;
    int activations = 0;
    ServicesProvider* servicesProvider = nullptr;
};

struct FakeBundle : Bundle {
    [[nodiscard]] std::optional<std::string> pathForResource(
        const std::string& name, const std::string& type) const override;
    [[nodiscard]] std::optional<Image> imageWithContentsOfFile(
        const std::string& path) const override;
    [[nodiscard]] std::optional<Image> imageNamed(const std::string& name) const override;

    // What a test may set.
    bool hasIconResource = true;
    bool isIconReadable = true;
    bool hasNamedIcon = true;
};

/// Answers each question from a script, in order; a question that no step expects is a failure, and
/// so is a step that no question used.
struct FakeDialogs : Dialogs {
    ~FakeDialogs() override;
    [[nodiscard]] AlertAnswer runModal(const Alert& alert) override;
    [[nodiscard]] OpenPanelAnswer runModal(const OpenPanel& panel) override;

    // What a test may do.

    /// Presses the button of this title, with the accessory's item at `index` selected. What
    /// `meanwhile` does happens while the alert is open.
    void answer(
        const std::string& title, int index = 0, std::function<void()> meanwhile = [] {});
    /// Presses the button of this title, with the accessory's text field left at `text`.
    void answerText(
        const std::string& title, const std::string& text, std::function<void()> meanwhile = [] {});
    /// Answers an alert with this number, whatever its buttons.
    void answerNumber(int response);
    /// Chooses a folder in the panel, or cancels it. What `meanwhile` does happens while it is
    /// open.
    void choose(
        const std::optional<std::string>& path, std::function<void()> meanwhile = [] {});

    std::vector<Alert> alerts; ///< As they were asked.
    std::vector<OpenPanel> panels;

private:
    [[nodiscard]] static int response(const Alert& alert, const std::string& title);

    std::deque<std::function<AlertAnswer(const Alert&)>> answers;
    std::deque<std::function<OpenPanelAnswer()>> choices;
};

struct FakeFileEvents : FileEvents {
    struct Stream {
        FileEventHandler handler;
        std::vector<std::string> paths;
        std::chrono::milliseconds latency;
        std::uint32_t flags;
        std::string state; ///< What was done to it: "made started stopped invalidated released".
    };

    [[nodiscard]] std::unique_ptr<FileEventStream> createStream(FileEventHandler handler,
        const std::vector<std::string>& paths, std::chrono::milliseconds latency,
        std::uint32_t flags) override;

    // What a test may do.

    /// Delivers a batch through the latest stream, even one that was stopped: whoever stopped it
    /// has to be deaf to what was already on its way.
    void deliver(const std::vector<std::string>& paths, const std::vector<std::uint32_t>& flags);

    bool canCreate = true;
    std::vector<std::shared_ptr<Stream>> streams; ///< In the order in which they were made.
};

struct FakeProcessRunner : ProcessRunner {
    [[nodiscard]] std::string pathForTool(const std::string& name) const override;
    [[nodiscard]] std::optional<std::string> run(
        const std::string& executable, const std::vector<std::string>& arguments) override;

    // What a test may do.
    std::map<std::string, std::string> openFiles; ///< By process identifier; none: no tool.
    std::vector<std::string> calls;
};

struct FakeUserDefaults : UserDefaults {
    [[nodiscard]] std::optional<std::string> data(const std::string& key) const override;
    [[nodiscard]] std::optional<std::string> string(const std::string& key) const override;
    void setData(const std::string& key, const std::string& bytes) override;

    // What a test may do.
    std::map<std::string, std::string> values;
    std::map<std::string, std::string> strings;
    int writes = 0;
};

struct FakeUserNotificationCenter : UserNotificationCenter {
    void setDelegate(UserNotificationCenterDelegate* newDelegate) override;
    void requestAuthorization(
        std::uint32_t options, std::function<void(bool granted)> completionHandler) override;
    void add(const UserNotification& notification) override;

    // What a test may look at.
    [[nodiscard]] std::vector<std::string> bodies() const;

    UserNotificationCenterDelegate* delegate = nullptr;
    std::optional<std::uint32_t> requestedOptions;
    std::vector<UserNotification> posted;
};

struct FakeWorkspace : Workspace {
    [[nodiscard]] std::vector<RunningApplication> runningApplications() const override;
    void addObserver(const void* observer, WorkspaceNotification notification,
        std::function<void()> work) override;
    void removeObserver(const void* observer) override;
    [[nodiscard]] bool open(const std::string& url) override;

    // What a test may do.

    /// An ordinary application with a window.
    void launch(std::int32_t pid, const std::string& bundleIdentifier, const std::string& name);
    void quit(std::int32_t pid);
    void notify(WorkspaceNotification notification);

    std::vector<RunningApplication> applications;
    std::vector<std::string> opened; ///< URLs, whether or not they could be.
    bool canOpen = true;

private:
    struct Entry {
        const void* observer;
        WorkspaceNotification notification;
        std::function<void()> work;
    };
    std::vector<Entry> entries;
};

/// A desktop for tests, installed for as long as it lives. The program's shared instances begin
/// anew on it, and end before it.
class FakePlatform {
public:
    FakePlatform();
    ~FakePlatform();
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;

    FakeApplication application;
    FakeBundle bundle;
    FakeDialogs dialogs;
    FakeDispatch dispatch;
    FakeFileEvents fileEvents;
    FakeProcessRunner processRunner;
    FakeUserDefaults userDefaults;
    FakeUserNotificationCenter userNotificationCenter;
    FakeWorkspace workspace;

private:
    Platform platform { application, bundle, dialogs, dispatch, fileEvents, processRunner,
        userDefaults, userNotificationCenter, workspace };
};

} // namespace stemvault
