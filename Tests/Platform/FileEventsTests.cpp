#include "LinuxDesktop/Dispatch/QtDispatch.h"
#include "LinuxDesktop/FileEvents/LinuxFileEvents.h"
#include "LinuxDesktop/QtTest.h"
#include "Platform/Stages.h"
#include "Support/FakePlatform.h"
#include "Support/TemporaryFolder.h"

#include <algorithm>
#include <functional>
#include <set>

namespace stemvault {
namespace {

// Which change on disk raises which event is tested with the real adapter only: the fake has no
// disk and delivers what a test tells it to.

struct FakeFileEventsStage {
    static constexpr const char* name = "Fake";

    void write(const std::string& file)
    {
        events.deliver(
            { path() + "/" + file }, { FileEventFlag::ItemIsFile | FileEventFlag::ItemCreated });
    }
    [[nodiscard]] std::string path() const { return "/folder"; }
    bool happens(const std::function<bool()>& condition) { return condition(); }

    FakeFileEvents events;
};

struct InotifyStage {
    static constexpr const char* name = "Inotify";

    void write(const std::string& file) const { folder.write(file, "x"); }
    [[nodiscard]] const std::string& path() const { return folder.path(); }
    bool happens(const std::function<bool()>& condition) { return stemvault::happens(condition); }

    TemporaryFolder folder;
    dispatch::QtDispatch dispatch;
    file_events::LinuxFileEvents events { dispatch };
};

template <typename Stage> struct FileEventsTests : testing::Test {
};
using FileEventsStages = testing::Types<FakeFileEventsStage, InotifyStage>;
TYPED_TEST_SUITE(FileEventsTests, FileEventsStages, StageNames);

/// A stream over the stage's folder, and the names of the files that it has reported.
struct Listener {
    template <typename Stage>
    explicit Listener(Stage& stage, const std::vector<std::string>& folders)
    {
        const auto handler = [this](const std::vector<std::string>& paths,
                                 const std::vector<std::uint32_t>& flags) {
            EXPECT_EQ(paths.size(), flags.size());
            for (const std::string& path : paths)
                names.insert(path.substr(path.rfind('/') + 1));
            onEvents();
        };
        stream = stage.events.createStream(
            handler, folders, 20ms, FileEventStreamFlag::NoDefer | FileEventStreamFlag::FileEvents);
    }

    template <typename Stage>
    explicit Listener(Stage& stage) : Listener(stage, { stage.path() }) { }

    [[nodiscard]] bool hasHeardOf(const std::string& file) const { return names.contains(file); }

    std::set<std::string> names;
    std::function<void()> onEvents = [] {};
    std::unique_ptr<FileEventStream> stream;
};

TEST(InotifyEventsTests, AFolderMayLieWithinAnother)
{
    InotifyStage stage;
    stage.folder.makeFolder("Song");
    const std::vector<std::string> inOrder { stage.path(), stage.path() + "/Song" };
    const std::vector<std::string> reversed { inOrder.rbegin(), inOrder.rend() };
    for (const auto& folders : { inOrder, reversed }) {
        Listener listener(stage, folders);
        listener.stream->start();
        stage.write("Song/Mix.wav");
        EXPECT_TRUE(stage.happens([&] { return listener.hasHeardOf("Mix.wav"); }));
        listener.stream->stop();
        listener.stream->invalidate();
    }
}

TYPED_TEST(FileEventsTests, AStreamReportsFromStartToStop)
{
    enum Step { Start, Stop, Invalidate };
    const struct {
        const char* what;
        std::vector<Step> steps;
        bool isReported;
    } rows[] = {
        { "before it was started", {}, false },
        { "started", { Start }, true },
        { "started twice", { Start, Start }, true },
        { "stopped", { Start, Stop }, false },
        { "stopped without a start", { Stop, Start }, true },
        { "started again", { Start, Stop, Start }, true },
        { "invalidated", { Start, Invalidate }, false },
        { "started once it was invalidated", { Start, Invalidate, Start }, false },
    };
    for (const auto& row : rows) {
        TypeParam stage;
        Listener witness(stage);
        witness.stream->start();
        Listener listener(stage);
        for (const Step step : row.steps)
            if (step == Start)
                listener.stream->start();
            else if (step == Stop)
                listener.stream->stop();
            else
                listener.stream->invalidate();
        stage.write("Mix.wav");
        EXPECT_TRUE(stage.happens([&] {
            return (row.isReported ? listener : witness).hasHeardOf("Mix.wav");
        })) << row.what;
        // A report of Mix.wav would have arrived before the one awaited here.
        stage.write("Later.wav");
        EXPECT_TRUE(stage.happens([&] { return witness.hasHeardOf("Later.wav"); })) << row.what;
        EXPECT_EQ(listener.hasHeardOf("Mix.wav"), row.isReported) << row.what;
    }
}

TYPED_TEST(FileEventsTests, AHandlerMayDestroyItsOwnStream)
{
    TypeParam stage;
    Listener listener(stage);
    listener.onEvents = [&listener] { listener.stream.reset(); };
    listener.stream->start();
    stage.write("Mix.wav");
    EXPECT_TRUE(stage.happens([&listener] { return !listener.stream; }));
}

TYPED_TEST(FileEventsTests, NoStreamIsMadeWithoutAHandlerOrFolders)
{
    TypeParam stage;
    const FileEventHandler ignore = [](const auto& /*paths*/, const auto& /*flags*/) {};
    EXPECT_TRUE(stage.events.createStream(ignore, { stage.path() }, 20ms, 0));
    EXPECT_FALSE(stage.events.createStream({}, { stage.path() }, 20ms, 0));
    EXPECT_FALSE(stage.events.createStream(ignore, {}, 20ms, 0));
}

} // namespace
} // namespace stemvault
