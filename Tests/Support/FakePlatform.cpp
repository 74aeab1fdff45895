#include "Support/FakePlatform.h"

#include "Foundation/Shared.h"
#include "Foundation/UnicodeText.h"
#include "Foundation/WeakGuard.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace stemvault {

FakeDialogs::~FakeDialogs()
{
    EXPECT_TRUE(answers.empty()) << answers.size() << " answers to alerts that never came";
    EXPECT_TRUE(choices.empty()) << choices.size() << " choices for panels that never came";
}

namespace {

template <typename Steps, typename Question>
auto takeStep(Steps& steps, const Question& question, const std::string& text)
{
    if (steps.empty()) {
        ADD_FAILURE() << "a question that nobody expected: " << text;
        return decltype(steps.front()(question)) {};
    }
    const auto step = std::move(steps.front());
    steps.pop_front();
    return step(question);
}

int responseOf(const Alert& alert, const std::string& title)
{
    const std::vector<std::string> lone { "OK" };
    const auto& buttons = alert.buttons.empty() ? lone : alert.buttons;
    const auto button = std::ranges::find(buttons, title);
    EXPECT_NE(button, buttons.end()) << "no button " << title;
    return ModalResponse::alertFirstButton + static_cast<int>(button - buttons.begin());
}

/// The answer, including the state of the accessory.
AlertAnswer answerOf(const Alert& alert, int response, int index)
{
    if (!alert.accessoryView)
        return { response, -1, {} };
    if (const auto* field = std::get_if<TextField>(&*alert.accessoryView))
        return { response, -1, field->text };
    return { response, index, {} };
}

} // namespace

AlertAnswer FakeDialogs::runModal(const Alert& alert)
{
    EXPECT_FALSE(dispatch && dispatch->isInBackground()) << alert.messageText;
    alerts.push_back(alert);
    activationsBefore.push_back(application ? application->activations : 0);
    return takeStep(answers, alert, alert.messageText);
}

OpenPanelAnswer FakeDialogs::runModal(const OpenPanel& panel)
{
    panels.push_back(panel);
    return takeStep(choices, panel, panel.message);
}

void FakeDialogs::answer(const std::string& title, int index, std::function<void()> meanwhile)
{
    answers.emplace_back([=](const Alert& alert) {
        meanwhile();
        return answerOf(alert, responseOf(alert, title), index);
    });
}

void FakeDialogs::answerText(const std::string& title, const std::string& text)
{
    answers.emplace_back([=](const Alert& alert) {
        return AlertAnswer { responseOf(alert, title), -1, text };
    });
}

void FakeDialogs::answerNumber(int response)
{
    answers.emplace_back([=](const Alert& alert) { return answerOf(alert, response, 0); });
}

void FakeDialogs::choose(const std::optional<std::string>& path, std::function<void()> meanwhile)
{
    // A cancelled panel may still return the item that was selected.
    choices.emplace_back([=](const OpenPanel&) {
        meanwhile();
        const FileURL url(path.value_or("/selected"));
        return OpenPanelAnswer { path ? ModalResponse::ok : ModalResponse::cancel, url, { url } };
    });
}

void FakeDialogs::chooseAll(const std::vector<std::string>& paths)
{
    const std::vector<FileURL> urls(paths.begin(), paths.end());
    choices.emplace_back([=](const OpenPanel&) {
        return OpenPanelAnswer { ModalResponse::ok, urls[0], urls };
    });
}

std::vector<std::string> FakeDialogs::texts() const
{
    std::vector<std::string> all;
    for (const Alert& alert : alerts)
        all.push_back(alert.informativeText);
    return all;
}

namespace {

class FakeStream : public FileEventStream {
public:
    explicit FakeStream(std::shared_ptr<FakeFileEvents::Stream> record) : stream(std::move(record))
    {
    }
    ~FakeStream() override { end(" released"); }
    void start() override
    {
        stream->state += " started";
        stream->isStarted = !isInvalid;
    }
    void stop() override { end(" stopped"); }
    void invalidate() override
    {
        end(" invalidated");
        isInvalid = true;
    }

private:
    void end(const char* how)
    {
        stream->state += how;
        stream->isStarted = false;
    }

    std::shared_ptr<FakeFileEvents::Stream> stream;
    bool isInvalid = false;
};

} // namespace

std::unique_ptr<FileEventStream> FakeFileEvents::createStream(FileEventHandler handler,
    const std::vector<std::string>& paths, std::chrono::milliseconds latency, std::uint32_t flags)
{
    if (!canCreate || !handler || paths.empty())
        return nullptr;
    streams.push_back(std::make_shared<Stream>(
        Stream { std::move(handler), paths, latency, flags, "made", false }));
    return std::make_unique<FakeStream>(streams.back());
}

void FakeFileEvents::deliver(
    const std::vector<std::string>& paths, const std::vector<std::uint32_t>& flags)
{
    for (const auto& stream : std::vector(streams))
        if (stream->isStarted)
            stream->handler(paths, flags);
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
    [[nodiscard]] bool isVisible() const override { return bar.isThere; }

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

void FakeURLSession::finish(const Result<std::string>& body)
{
    ASSERT_FALSE(handlers.empty()) << "no fetch is under way";
    const auto handler = std::move(handlers.front());
    handlers.pop_front();
    handler(body);
}

namespace {

class FakeWindow : public Window {
public:
    FakeWindow(std::string& done, std::function<View()> drawing, Dispatch& queues)
        : history(done), body(std::move(drawing)), dispatch(queues)
    {
    }
    void setTitle(const std::string& title) override { history += ", titled " + title; }
    void setStyleMask(std::uint32_t mask) override { history += ", style " + std::to_string(mask); }
    void center() override
    {
        history += ", centered";
        draw();
    }
    void makeKeyAndOrderFront() override
    {
        history += ", shown";
        if (!std::exchange(isShown, true))
            draw();
    }
    void setNeedsDisplay() override
    {
        if (!isShown || std::exchange(isDrawingDue, true))
            return;
        dispatch.mainAsync(alive.guard([this] {
            isDrawingDue = false;
            history += ", drawn";
            draw();
        }));
    }

private:
    void draw() const { static_cast<void>(body()); }

    std::string& history;
    std::function<View()> body;
    Dispatch& dispatch;
    bool isShown = false;
    bool isDrawingDue = false;
    WeakGuard alive;
};

} // namespace

std::unique_ptr<Window> FakeWindows::window(std::function<View()> body)
{
    return std::make_unique<FakeWindow>(windows.emplace_back("made"), std::move(body), dispatch);
}

void FakeUserNotificationCenter::add(const UserNotification& notification)
{
    if (!isInFront || !delegate)
        return posted.push_back(notification);
    delegate->willPresent(
        notification, [this, shown = notification](std::uint32_t options) mutable {
            if ((options & PresentationOption::Sound) == 0)
                shown.sound = UserNotificationSound::None;
            if ((options & PresentationOption::Banner) != 0)
                posted.push_back(shown);
        });
}

bool FakeWorkspace::open(const std::string& url)
{
    const auto isOf = [text = lowercased(url)](const std::string& scheme) {
        return text.size() > scheme.size() && text.starts_with(scheme);
    };
    if (!isOf("https://") && !isOf("http://") && !isOf("x-apple.systempreferences:"))
        return false;
    opened.push_back(url);
    return canOpen;
}

void FakeWorkspace::notify(WorkspaceNotification notification)
{
    // Observers that are added or removed during a notification are not called.
    for (const Entry& entry : std::vector(entries))
        if (entry.notification == notification
            && std::ranges::count(entries, entry.number, &Entry::number) == 1)
            entry.work();
}

FakePlatform::FakePlatform()
{
    SharedInstances::destroyAll();
    dialogs.application = &application;
    dialogs.dispatch = &dispatch;
    Platform::install(&platform);
}

FakePlatform::~FakePlatform()
{
    SharedInstances::destroyAll();
    Platform::install(nullptr);
}

void FakePlatform::openSession(const std::string& file)
{
    openFiles.listings[5] = "n" + file + "\n";
    if (workspace.applications.empty())
        workspace.launch(5, "com.cockos.reaper", "REAPER");
    else
        workspace.notify(WorkspaceNotification::DidActivateApplication);
    dispatch.settle();
}

void FakePlatform::quitDAW()
{
    workspace.quit(5);
    dispatch.settle();
}

} // namespace stemvault
