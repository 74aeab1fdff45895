#include "Support/FakePlatform.h"

#include "Foundation/Shared.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace stemvault {

std::optional<std::string> FakeBundle::pathForResource(
    const std::string& name, const std::string& type) const
{
    if (!hasIconResource)
        return std::nullopt;
    return "/resources/" + name + "." + type;
}

std::optional<Image> FakeBundle::imageWithContentsOfFile(const std::string& path) const
{
    return isIconReadable ? std::optional(Image { path }) : std::nullopt;
}

std::optional<Image> FakeBundle::imageNamed(const std::string& name) const
{
    return hasNamedIcon ? std::optional(Image { name }) : std::nullopt;
}

std::optional<Image> FakeBundle::imageWithSystemSymbolName(
    const std::string& name, const std::string& accessibilityDescription) const
{
    if (!hasSymbols)
        return std::nullopt;
    return Image { "symbol:" + name, accessibilityDescription };
}

FakeDialogs::~FakeDialogs()
{
    EXPECT_TRUE(answers.empty()) << answers.size() << " answers to alerts that never came";
    EXPECT_TRUE(choices.empty()) << choices.size() << " choices for panels that never came";
}

AlertAnswer FakeDialogs::runModal(const Alert& alert)
{
    alerts.push_back(alert);
    if (answers.empty()) {
        ADD_FAILURE() << "an alert that nobody expected: " << alert.messageText;
        return {};
    }
    const auto step = std::move(answers.front());
    answers.pop_front();
    return step(alert);
}

OpenPanelAnswer FakeDialogs::runModal(const OpenPanel& panel)
{
    panels.push_back(panel);
    if (choices.empty()) {
        ADD_FAILURE() << "a panel that nobody expected: " << panel.message;
        return {};
    }
    const auto step = std::move(choices.front());
    choices.pop_front();
    return step();
}

int FakeDialogs::response(const Alert& alert, const std::string& title)
{
    const std::vector<std::string> lone { "OK" };
    const auto& buttons = alert.buttons.empty() ? lone : alert.buttons;
    const auto button = std::ranges::find(buttons, title);
    EXPECT_NE(button, buttons.end()) << "no button " << title;
    return ModalResponse::alertFirstButton
        + static_cast<int>(std::distance(buttons.begin(), button));
}

void FakeDialogs::answer(const std::string& title, int index, std::function<void()> meanwhile)
{
    answers.emplace_back([=](const Alert& alert) {
        meanwhile();
        return AlertAnswer { response(alert, title), index, {} };
    });
}

void FakeDialogs::answerText(
    const std::string& title, const std::string& text, std::function<void()> meanwhile)
{
    answers.emplace_back([=](const Alert& alert) {
        meanwhile();
        EXPECT_TRUE(alert.accessoryView && std::holds_alternative<TextField>(*alert.accessoryView))
            << "no text field";
        return AlertAnswer { response(alert, title), -1, text };
    });
}

void FakeDialogs::answerNumber(int response)
{
    answers.emplace_back([response](const Alert&) { return AlertAnswer { response, 0, {} }; });
}

void FakeDialogs::choose(const std::optional<std::string>& path, std::function<void()> meanwhile)
{
    // A panel that is cancelled may still name what was selected in it.
    choices.emplace_back([=] {
        meanwhile();
        const FileURL url(path.value_or("/selected"));
        return OpenPanelAnswer { path ? ModalResponse::ok : ModalResponse::cancel, url, { url } };
    });
}

void FakeDialogs::chooseAll(const std::vector<std::string>& paths)
{
    std::vector<FileURL> urls;
    for (const std::string& path : paths)
        urls.emplace_back(path);
    choices.emplace_back([urls] {
        return OpenPanelAnswer { ModalResponse::ok, urls.front(), urls };
    });
}

namespace {

class FakeStream : public FileEventStream {
public:
    explicit FakeStream(std::shared_ptr<FakeFileEvents::Stream> record) : stream(std::move(record))
    {
    }
    ~FakeStream() override { stream->state += " released"; }
    void start() override { stream->state += " started"; }
    void stop() override { stream->state += " stopped"; }
    void invalidate() override { stream->state += " invalidated"; }

private:
    std::shared_ptr<FakeFileEvents::Stream> stream;
};

} // namespace

std::unique_ptr<FileEventStream> FakeFileEvents::createStream(FileEventHandler handler,
    const std::vector<std::string>& paths, std::chrono::milliseconds latency, std::uint32_t flags)
{
    if (!canCreate)
        return nullptr;
    streams.push_back(
        std::make_shared<Stream>(Stream { std::move(handler), paths, latency, flags, "made" }));
    return std::make_unique<FakeStream>(streams.back());
}

void FakeFileEvents::deliver(
    const std::vector<std::string>& paths, const std::vector<std::uint32_t>& flags)
{
    streams.back()->handler(paths, flags);
}

Result<void> FakeLoginItem::registerItem()
{
    calls.emplace_back("register");
    return isRefused ? Result<void>(Failure { "refused" }) : Result<void>();
}

Result<void> FakeLoginItem::unregisterItem()
{
    calls.emplace_back("unregister");
    return isRefused ? Result<void>(Failure { "refused" }) : Result<void>();
}

std::string FakeProcessRunner::pathForTool(const std::string& name) const
{
    return "/tools/" + name;
}

std::optional<std::string> FakeProcessRunner::run(
    const std::string& executable, const std::vector<std::string>& arguments)
{
    std::string call = executable;
    for (const std::string& argument : arguments)
        call += " " + argument;
    calls.push_back(call);
    const auto files = openFiles.find(arguments.at(1));
    return files == openFiles.end() ? std::nullopt : std::optional(files->second);
}

namespace {

class FakeStatusItem : public StatusItem {
public:
    explicit FakeStatusItem(FakeStatusBar& owner) : bar(owner) { }
    void setImage(const std::optional<Image>& image) override { bar.image = image; }
    void setMenu(Menu menu, MenuDelegate* delegate) override
    {
        bar.menu = std::move(menu);
        bar.delegate = delegate;
    }
    void setMenuNeedsUpdate() override { ++bar.updates; }

private:
    FakeStatusBar& bar;
};

} // namespace

std::unique_ptr<StatusItem> FakeStatusBar::statusItem(double askedLength)
{
    length = askedLength;
    return std::make_unique<FakeStatusItem>(*this);
}

const Menu& FakeStatusBar::open()
{
    delegate->menuWillOpen(menu);
    return menu;
}

void FakeStatusBar::choose(const std::string& title)
{
    const auto item = std::ranges::find(open().items, title, &MenuItem::title);
    ASSERT_NE(item, menu.items.end()) << "no row " << title;
    ASSERT_TRUE(item->isEnabled && item->action) << title;
    item->action();
}

void FakeURLSession::dataTask(const std::string& url, CompletionHandler completionHandler)
{
    urls.push_back(url);
    handlers.push_back(std::move(completionHandler));
}

void FakeURLSession::finish(const Result<std::string>& body)
{
    ASSERT_FALSE(handlers.empty()) << "no fetch is under way";
    const auto handler = std::move(handlers.front());
    handlers.pop_front();
    handler(body);
}

std::optional<std::string> FakeUserDefaults::data(const std::string& key) const
{
    const auto value = values.find(key);
    return value == values.end() ? std::nullopt : std::optional(value->second);
}

std::optional<std::string> FakeUserDefaults::string(const std::string& key) const
{
    const auto value = strings.find(key);
    return value == strings.end() ? std::nullopt : std::optional(value->second);
}

std::optional<WallTime> FakeUserDefaults::date(const std::string& key) const
{
    const auto value = dates.find(key);
    return value == dates.end() ? std::nullopt : std::optional(value->second);
}

void FakeUserDefaults::setDate(const std::string& key, WallTime date)
{
    dates[key] = date;
}

void FakeUserDefaults::setData(const std::string& key, const std::string& bytes)
{
    values[key] = bytes;
    ++writes;
}

void FakeUserNotificationCenter::setDelegate(UserNotificationCenterDelegate* newDelegate)
{
    delegate = newDelegate;
}

void FakeUserNotificationCenter::requestAuthorization(
    std::uint32_t options, std::function<void(bool granted)> /*completionHandler*/)
{
    requestedOptions = options;
}

void FakeUserNotificationCenter::add(const UserNotification& notification)
{
    posted.push_back(notification);
}

std::vector<std::string> FakeUserNotificationCenter::bodies() const
{
    std::vector<std::string> all;
    for (const UserNotification& notification : posted)
        all.push_back(notification.body);
    return all;
}

namespace {

class FakeWindow : public Window {
public:
    explicit FakeWindow(std::shared_ptr<FakeWindows::Record> shared) : record(std::move(shared)) { }
    void setTitle(const std::string& title) override { record->title = title; }
    void setStyleMask(std::uint32_t mask) override { record->styleMask = mask; }
    void center() override { record->history += "centered "; }
    void makeKeyAndOrderFront() override { record->history += "shown "; }
    void setNeedsDisplay() override { ++record->drawings; }

private:
    std::shared_ptr<FakeWindows::Record> record;
};

} // namespace

std::unique_ptr<Window> FakeWindows::window(std::function<View()> body)
{
    windows.push_back(std::make_shared<Record>(Record { std::move(body), {}, 0, {}, 0 }));
    return std::make_unique<FakeWindow>(windows.back());
}

std::vector<RunningApplication> FakeWorkspace::runningApplications() const
{
    return applications;
}

void FakeWorkspace::addObserver(
    const void* observer, WorkspaceNotification notification, std::function<void()> work)
{
    entries.push_back({ observer, notification, std::move(work) });
}

void FakeWorkspace::removeObserver(const void* observer)
{
    std::erase_if(entries, [observer](const Entry& entry) { return entry.observer == observer; });
}

bool FakeWorkspace::open(const std::string& url)
{
    opened.push_back(url);
    return canOpen;
}

void FakeWorkspace::launch(
    std::int32_t pid, const std::string& bundleIdentifier, const std::string& name)
{
    applications.push_back({ bundleIdentifier, ActivationPolicy::Regular, name, pid });
    notify(WorkspaceNotification::DidLaunchApplication);
}

void FakeWorkspace::quit(std::int32_t pid)
{
    std::erase_if(applications, [pid](const RunningApplication& application) {
        return application.processIdentifier == pid;
    });
    notify(WorkspaceNotification::DidTerminateApplication);
}

void FakeWorkspace::notify(WorkspaceNotification notification)
{
    for (const Entry& entry : std::vector(entries))
        if (entry.notification == notification)
            entry.work();
}

FakePlatform::FakePlatform()
{
    SharedInstances::destroyAll();
    Platform::install(&platform);
}

FakePlatform::~FakePlatform()
{
    SharedInstances::destroyAll();
    Platform::install(nullptr);
}

} // namespace stemvault
