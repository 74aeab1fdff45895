#pragma once

#include "Platform/Platform.h"
#include "Support/FakeDispatch.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
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
    void terminate() override { ++terminations; }

    // What a test may look at.
    std::optional<Image> icon;
    int activations = 0;
    int terminations = 0;
    ServicesProvider* servicesProvider = nullptr;
};

struct FakeBundle : Bundle {
    [[nodiscard]] std::optional<std::string> pathForResource(
        const std::string& name, const std::string& type) const override
    {
        return existing(name + "." + type, "/resources/" + name + "." + type);
    }
    [[nodiscard]] std::optional<Image> imageWithContentsOfFile(
        const std::string& path) const override
    {
        return existing(path, Image { path });
    }
    [[nodiscard]] std::optional<Image> imageNamed(const std::string& name) const override
    {
        return existing(name, Image { name });
    }
    [[nodiscard]] std::optional<Image> imageWithSystemSymbolName(
        const std::string& name, const std::string& description) const override
    {
        return existing(name, Image { "symbol:" + name, description });
    }
    [[nodiscard]] std::optional<std::string> shortVersionString() const override { return version; }

    // What a test may set.
    std::set<std::string> missing; ///< Resources, files, images and symbols, by their names.
    std::optional<std::string> version = "1.4";

private:
    template <typename Value>
    [[nodiscard]] std::optional<Value> existing(const std::string& name, const Value& value) const
    {
        return missing.contains(name) ? std::nullopt : std::optional(value);
    }
};

/// Answers each question from a script, in order; a question that no step expects is a failure, and
/// so is a step that no question used.
struct FakeDialogs : Dialogs {
    ~FakeDialogs() override;
    [[nodiscard]] AlertAnswer runModal(const Alert& alert) override;
    [[nodiscard]] OpenPanelAnswer runModal(const OpenPanel& panel) override;

    // What a test may do.

    /// Presses the button of this title, with the pop-up button's item at `index` selected, or with
    /// the text field as it was. What `meanwhile` does happens while the alert is open.
    void answer(
        const std::string& title, int index = 0, std::function<void()> meanwhile = [] {});
    /// Presses the button of this title, with the accessory's text field left at `text`.
    void answerText(const std::string& title, const std::string& text);
    /// Answers an alert with this number, whatever its buttons.
    void answerNumber(int response);
    /// Chooses a folder in the panel, or cancels it. What `meanwhile` does happens while it is
    /// open.
    void choose(
        const std::optional<std::string>& path, std::function<void()> meanwhile = [] {});
    /// Chooses several.
    void chooseAll(const std::vector<std::string>& paths);

    std::vector<Alert> alerts; ///< As they were asked.
    std::vector<OpenPanel> panels;
    const FakeApplication* application = nullptr;
    const FakeDispatch* dispatch = nullptr;
    std::vector<int> activationsBefore; ///< How often the program had come to the front by then.

private:
    std::deque<std::function<AlertAnswer(const Alert&)>> answers;
    std::deque<std::function<OpenPanelAnswer(const OpenPanel&)>> choices;
};

struct FakeFileEvents : FileEvents {
    struct Stream {
        FileEventHandler handler;
        std::vector<std::string> paths;
        std::chrono::milliseconds latency;
        std::uint32_t flags;
        std::string state; ///< What was done to it: "made started stopped invalidated released".
        bool isStarted = false;
    };

    [[nodiscard]] std::unique_ptr<FileEventStream> createStream(FileEventHandler handler,
        const std::vector<std::string>& paths, std::chrono::milliseconds latency,
        std::uint32_t flags) override;

    // What a test may do.

    /// Delivers a batch through every stream that is started.
    void deliver(const std::vector<std::string>& paths, const std::vector<std::uint32_t>& flags);

    bool canCreate = true;
    std::vector<std::shared_ptr<Stream>> streams; ///< In the order in which they were made.
};

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

struct FakeOpenFiles : OpenFiles {
    [[nodiscard]] std::optional<std::string> listing(std::int32_t process) override
    {
        calls.push_back(process);
        if (!isLsofThere)
            return std::nullopt;
        const auto found = listings.find(process);
        return found == listings.end() ? std::string() : found->second;
    }

    // What a test may do.
    std::map<std::int32_t, std::string> listings; ///< By process; others have no file open.
    bool isLsofThere = true;
    std::vector<std::int32_t> calls; ///< The processes asked about.
};

/// Has room for one item.
struct FakeStatusBar : StatusBar {
    [[nodiscard]] std::unique_ptr<StatusItem> statusItem(double length) override;

    // What a test may do.

    /// The menu as the user finds it on opening it.
    const Menu& open();
    /// Opens the menu and chooses the row of this title.
    void choose(const std::string& title);

    bool isThere = true;
    double length = 0;
    std::optional<Image> image;
    Menu menu;
    int updates = 0; ///< How often the menu was said to be out of date.
    MenuDelegate* delegate = nullptr;
};

struct FakeURLSession : URLSession {
    void dataTask(const std::string& url, CompletionHandler completionHandler) override
    {
        urls.push_back(url);
        handlers.push_back(std::move(completionHandler));
    }

    // What a test may do.

    /// Ends the oldest fetch under way.
    void finish(const Result<std::string>& body);

    std::vector<std::string> urls; ///< As they were asked for.

private:
    std::deque<CompletionHandler> handlers;
};

struct FakeUserDefaults : UserDefaults {
    [[nodiscard]] std::optional<std::string> data(const std::string& key) const override
    {
        return found(values, key);
    }
    [[nodiscard]] std::optional<std::string> string(const std::string& key) const override
    {
        return found(strings, key);
    }
    [[nodiscard]] std::optional<WallTime> date(const std::string& key) const override
    {
        return found(dates, key);
    }
    void setData(const std::string& key, const std::string& bytes) override
    {
        forget(key);
        values[key] = bytes;
        ++writes;
    }
    void setDate(const std::string& key, WallTime date) override
    {
        forget(key);
        dates[key] = std::chrono::floor<std::chrono::milliseconds>(date);
    }

    // What a test may do.
    std::map<std::string, std::string> values;
    std::map<std::string, WallTime> dates;
    std::map<std::string, std::string> strings;
    int writes = 0;

private:
    /// A key has a value of one kind.
    void forget(const std::string& key)
    {
        values.erase(key);
        dates.erase(key);
        strings.erase(key);
    }
    template <typename Map>
    [[nodiscard]] static std::optional<typename Map::mapped_type> found(
        const Map& map, const std::string& key)
    {
        const auto entry = map.find(key);
        return entry == map.end() ? std::nullopt : std::optional(entry->second);
    }
};

struct FakeUserNotificationCenter : UserNotificationCenter {
    explicit FakeUserNotificationCenter(Dispatch& queues) : dispatch(queues) { }
    void setDelegate(UserNotificationCenterDelegate* newDelegate) override
    {
        delegate = newDelegate;
    }
    void requestAuthorization(
        std::uint32_t options, std::function<void(bool)> completionHandler) override
    {
        requestedOptions = options;
        dispatch.mainAsync([answer = std::move(completionHandler)] { answer(true); });
    }
    void add(const UserNotification& notification) override;

    // What a test may look at and do.
    [[nodiscard]] std::vector<std::string> bodies() const
    {
        std::vector<std::string> all;
        for (const UserNotification& notification : posted)
            all.push_back(notification.body);
        return all;
    }

    UserNotificationCenterDelegate* delegate = nullptr;
    std::optional<std::uint32_t> requestedOptions;
    std::vector<UserNotification> posted; ///< As they were shown.
    bool isInFront = false; ///< Whether the program is, so that the delegate decides.

private:
    Dispatch& dispatch;
};

struct FakeWindows : Windows {
    explicit FakeWindows(Dispatch& queues) : dispatch(queues) { }
    [[nodiscard]] std::unique_ptr<Window> window(std::function<View()> body) override;

    // What a test may look at.
    std::deque<std::string> windows; ///< What was done to each: "made, titled Mixes, shown".

private:
    Dispatch& dispatch;
};

struct FakeWorkspace : Workspace {
    [[nodiscard]] std::vector<RunningApplication> runningApplications() const override
    {
        return applications;
    }
    void addObserver(const void* observer, WorkspaceNotification notification,
        std::function<void()> work) override
    {
        entries.push_back({ observer, notification, std::move(work), ++entriesAdded });
    }
    void removeObserver(const void* observer) override
    {
        std::erase_if(entries, [=](const Entry& entry) { return entry.observer == observer; });
    }
    [[nodiscard]] bool open(const std::string& url) override;

    // What a test may do.

    /// An ordinary application with a window.
    void launch(std::int32_t pid, const std::string& bundleIdentifier, const std::string& name)
    {
        applications.push_back({ bundleIdentifier, ActivationPolicy::Regular, name, pid });
        notify(WorkspaceNotification::DidLaunchApplication);
    }
    void quit(std::int32_t pid)
    {
        std::erase_if(
            applications, [=](const auto& each) { return each.processIdentifier == pid; });
        notify(WorkspaceNotification::DidTerminateApplication);
    }
    void notify(WorkspaceNotification notification);

    std::vector<RunningApplication> applications;
    std::vector<std::string> opened; ///< URLs that are not refused, whether or not they could be.
    bool canOpen = true;

private:
    struct Entry {
        const void* observer;
        WorkspaceNotification notification;
        std::function<void()> work;
        std::uint64_t number; ///< No other entry has or had it.
    };
    std::vector<Entry> entries;
    std::uint64_t entriesAdded = 0;
};

/// A desktop for tests, installed for as long as it lives. The program's shared instances begin
/// anew on it, and end before it.
class FakePlatform {
public:
    FakePlatform();
    ~FakePlatform();
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;

    /// Opens this file in a DAW, process 5, which is launched first unless it runs.
    void openSession(const std::string& file);

    FakeApplication application;
    FakeBundle bundle;
    FakeDialogs dialogs;
    FakeDispatch dispatch;
    FakeFileEvents fileEvents;
    FakeLoginItem loginItem;
    FakeOpenFiles openFiles;
    FakeStatusBar statusBar;
    FakeURLSession urlSession;
    FakeUserDefaults userDefaults;
    FakeUserNotificationCenter userNotificationCenter { dispatch };
    FakeWindows windows { dispatch };
    FakeWorkspace workspace;

private:
    Platform platform { application, bundle, dialogs, dispatch, fileEvents, loginItem, openFiles,
        statusBar, urlSession, userDefaults, userNotificationCenter, windows, workspace };
};

} // namespace stemvault
