#include "FileManager/FileCopy.h"
#include "LinuxDesktop/FileEvents/StreamStage.h"
#include "Platform/FileEvents.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace stemvault::file_events {
namespace {

using namespace std::chrono_literals;
using Step = StreamStage::Step;
using Reports = StreamStage::Reports;

/// An expected report, with a letter for each flag. Flags in capitals must be set; those in lower
/// case may be: timing decides whether a write raises an event or its result is found in a listing.
struct Report {
    const char* flags;
    std::string path;
};

/// The flags of a path add up over all batches. Paths that are not listed must not be reported.
struct Scenario {
    const char* name;
    std::vector<Step> before;
    std::vector<Step> during;
    std::vector<Report> reports;
    std::vector<std::string> trees = {}; ///< Everything in these is new.
    std::vector<std::string> roots = { "root" };
};

void PrintTo(const Scenario& scenario, std::ostream* out)
{
    *out << scenario.name;
}

constexpr std::pair<char, std::uint32_t> letters[] = { { 'C', FileEventFlag::ItemCreated },
    { 'M', FileEventFlag::ItemModified }, { 'R', FileEventFlag::ItemRenamed },
    { 'D', FileEventFlag::ItemRemoved }, { 'F', FileEventFlag::ItemIsFile },
    { 'O', FileEventFlag::ItemIsDir }, { 'L', FileEventFlag::ItemIsSymlink },
    { 'S', FileEventFlag::MustScanSubDirs }, { 'X', FileEventFlag::RootChanged } };

std::string lettersOf(std::uint32_t flags)
{
    std::string text;
    for (const auto& [letter, flag] : letters)
        text += (flags & flag) != 0 ? std::string(1, letter) : "";
    return text;
}

bool matches(std::uint32_t flags, std::string_view wanted)
{
    std::uint32_t must = 0;
    std::uint32_t may = 0;
    for (const auto& [letter, flag] : letters) {
        must |= wanted.find(letter) != std::string_view::npos ? flag : 0;
        may |= wanted.find(static_cast<char>(letter | 0x20)) != std::string_view::npos ? flag : 0;
    }
    return (flags & must) == must && (flags & ~(must | may)) == 0;
}

/// What is wrong with the reports, in words; empty if nothing is.
std::string complaints(const Reports& reports, const std::vector<Report>& expected)
{
    std::string text;
    std::set<std::string> known;
    for (const auto& [flags, path] : expected) {
        const auto found = reports.find(path);
        const std::uint32_t actual = found == reports.end() ? 0 : found->second;
        known.insert(path);
        if (!matches(actual, flags))
            text += path + " is " + lettersOf(actual) + ", not " + flags + "\n";
    }
    for (const auto& [path, flags] : reports)
        if (!known.contains(path))
            text += path + " is " + lettersOf(flags) + " and should be silent\n";
    return text;
}

void expectTree(StreamStage& stage, const std::string& top, std::vector<Report>& reports)
{
    for (const auto& item : std::filesystem::recursive_directory_iterator(stage.path(top))) {
        const std::string path = item.path().native().substr(stage.path("").size());
        reports.push_back({ item.is_symlink() ? "CL" : item.is_directory() ? "CO" : "CmF", path });
    }
}

void run(const Scenario& scenario)
{
    StreamStage stage;
    for (const Step& step : scenario.before)
        step(stage);
    age(stage, 20ms);
    stage.start(scenario.roots);
    for (const Step& step : scenario.during)
        step(stage);
    std::vector<Report> expected = scenario.reports;
    for (const std::string& tree : scenario.trees)
        expectTree(stage, tree, expected);
    (void)stage.waitFor(
        [&](const Reports& reports) { return complaints(reports, expected).empty(); });
    stage.sync();
    EXPECT_EQ(complaints(stage.reports(), expected), "");
}

Step exchange(const char* one, const char* other)
{
    return [=](StreamStage& stage) {
        EXPECT_EQ(renameat2(AT_FDCWD, stage.path(one).c_str(), AT_FDCWD, stage.path(other).c_str(),
                      RENAME_EXCHANGE),
            0);
    };
}

/// Maps a file, writes through the mapping if `isWritten`, and closes the file.
Step mapped(const char* name, bool isWritten)
{
    return [=](StreamStage& stage) {
        const FileDescriptor file(open(stage.path(name).c_str(), O_RDWR | O_CLOEXEC));
        void* const bytes = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
        if (isWritten)
            static_cast<char*>(bytes)[0] = 'x';
        munmap(bytes, 4096);
    };
}

enum class Closed { AtOnce, Later };

/// Writes the beginning of a file, renames it while it is open, and closes it without more writes.
Step renamedWhileOpen(const char* from, const char* to, Closed closed)
{
    return [=](StreamStage& stage) {
        const FileDescriptor file(
            open(stage.path(from).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        EXPECT_EQ(write(file.get(), "RIFF", 4), 4);
        EXPECT_EQ(rename(stage.path(from).c_str(), stage.path(to).c_str()), 0);
        if (closed == Closed::Later)
            age(stage, 200ms);
    };
}

Step copyAsWeDo(const char* from, const char* to)
{
    return [=](StreamStage& stage) {
        EXPECT_TRUE(copyItem(stage.path(from), stage.path(to), CopyOptions {}));
    };
}

void linkUnnamedFile(StreamStage& stage)
{
    const FileDescriptor file(
        open(stage.path("root").c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600));
    EXPECT_EQ(write(file.get(), "x", 1), 1);
    const std::string unnamed = "/proc/self/fd/" + std::to_string(file.get());
    EXPECT_EQ(linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, stage.path("root/f").c_str(),
                  AT_SYMLINK_FOLLOW),
        0);
}

const std::string longName(200, 'n');

/// Creates nested folders and enters them until the path is too long for any system call.
const std::string enterDeepFolder =
    "cd -P root; for i in $(seq 25); do mkdir -p " + longName + "; cd -P " + longName + "; done; ";

std::string deepPath()
{
    std::string path = "root";
    for (int depth = 0; depth < 25; ++depth)
        path += "/" + longName;
    return path + "/f";
}

std::vector<Report> numbered(const char* flags, const std::string& name, int count = 300)
{
    std::vector<Report> reports;
    for (int number = 1; number <= count; ++number)
        reports.push_back({ flags, name + std::to_string(number) });
    return reports;
}

std::vector<Report> joined(std::vector<Report> reports, const std::vector<Report>& more)
{
    reports.insert(reports.end(), more.begin(), more.end());
    return reports;
}

/// Shortens files without opening them, which raises no close.
void truncateAll(StreamStage& stage)
{
    for (int file = 1; file <= 300; ++file)
        EXPECT_EQ(truncate(stage.path("root/" + std::to_string(file)).c_str(), 1), 0);
}

Step held(bool isHeld)
{
    return [=](StreamStage& stage) { stage.calls().holdReads(isHeld); };
}

Step withoutProcessor(bool isHeld)
{
    return [=](StreamStage& stage) { stage.calls().holdWaits(isHeld); };
}

Step watchLimit(int watches)
{
    return [=](StreamStage& stage) { stage.calls().watchesLeft = watches; };
}

Step noDescriptors(bool areNone)
{
    return [=](StreamStage& stage) { stage.calls().noDescriptors = areNone; };
}

/// Once all is watched, touches the files in `root` in turn, each when the stream has no event
/// left.
void touchesBetweenReads(StreamStage& stage)
{
    stage.calls().afterEmptyRead = [&stage, file = 1]() mutable {
        const std::string path = stage.path("root/" + std::to_string(file));
        if (stage.watchesAll() && ::utimensat(AT_FDCWD, path.c_str(), nullptr, 0) == 0)
            ++file;
    };
}

/// Lets time pass, so that earlier steps are clearly older than later ones.
void longAgo(StreamStage& stage)
{
    age(stage, 150ms);
}

/// Folders and files that were there long before.
const Step oldTree = sh("mkdir -p root/a/deep out/t/deep; echo > root/a/deep/x; echo > out/t/x");

const std::vector<Scenario> scenarios = {
    // Files.
    { "KindsOfItems", { sh("mkdir root") }, { sh("mkdir root/d; ln -s d root/l; mkfifo root/p") },
        { { "CO", "root/d" }, { "CL", "root/l" }, { "C", "root/p" } } },
    { "NotWritten", { sh("mkdir root out; for f in 1 2 3 4 5 6 7; do echo > root/$f; done") },
        {
            sh("exec 3<> root/1; read -r x <&3"), // Opened for writing, as taggers do.
            sh("touch root/2"),
            sh("touch -d 2001-02-03 root/3; touch -m -d 2001-02-03 root/4"),
            sh("chmod 600 root/5"),
            mapped("root/6", false),
            sh("mv root/7 root/8; exec 3<> root/8"),
        },
        { { "RF", "root/7" }, { "RF", "root/8" } } },
    { "TouchedJustAfterTheStart",
        { sh("mkdir root; for f in 1 2 3 4 5 6 7; do echo > root/$f; done"), touchesBetweenReads },
        { sync }, {} },
    { "TouchedAndOpenedLater", { sh("mkdir root; echo > root/1; echo > root/2") },
        { sh("touch root/1 root/2"), sync, longAgo, sh("exec 3<> root/1; mv root/2 root/3"), sync,
            sh("exec 3<> root/3") },
        { { "RF", "root/2" }, { "RF", "root/3" } } },
    { "WrittenThroughMapping", { sh("mkdir root; truncate -s 4096 root/f root/g") },
        { mapped("root/f", true), sh("touch root/g"), sync, longAgo, mapped("root/g", true) },
        { { "MF", "root/f" }, { "MF", "root/g" } } },
    { "WrittenInOtherWays", { sh("mkdir root; for f in 1 2 3; do echo old > root/$f; done") },
        { sh("truncate -s 2 root/1"), sh("touch -d 2001-02-03 root/2; echo new > root/2"),
            sh(": > root/3") },
        { { "MF", "root/1" }, { "MF", "root/2" }, { "MF", "root/3" } } },
    // A file written in a watched folder and renamed meanwhile is reported when it is closed, under
    // its last name. A file written elsewhere counts only as moved in.
    { "RenamedWhileWritten", { sh("mkdir root out") },
        { longAgo, renamedWhileOpen("root/1.tmp", "root/1", Closed::AtOnce),
            renamedWhileOpen("root/2.tmp", "root/2", Closed::Later) },
        { { "CmRF", "root/1.tmp" }, { "RMF", "root/1" }, { "CmRF", "root/2.tmp" },
            { "RMF", "root/2" } } },
    { "MovedInWhileWritten", { sh("mkdir root out") },
        { longAgo, renamedWhileOpen("out/1", "root/1", Closed::AtOnce),
            renamedWhileOpen("out/2", "root/2", Closed::Later) },
        { { "RF", "root/1" }, { "RF", "root/2" } } },
    { "UnnamedFileLinked", { sh("mkdir root") }, { linkUnnamedFile }, { { "CF", "root/f" } } },
    { "LinksAreNotEntered",
        { sh("mkdir -p root/d out; ln -s ../out root/l; ln -s . root/loop; mkfifo root/p") },
        { sh("echo > out/f; echo > root/g") }, { { "CMF", "root/g" } } },
    // Names are bytes.
    { "StrangeNames", { sh("mkdir root") },
        { sh("cd root; echo > ' a '; echo > 'b\nc'; echo > \"$(printf 'caf\\351')\"; mkdir "
             "$(printf '\\377'); echo > $(printf %0255d 0)") },
        { { "CMF", "root/ a " }, { "CMF", "root/b\nc" }, { "CMF", "root/caf\xE9" },
            { "CO", "root/\xFF" }, { "CMF", "root/" + std::string(255, '0') } } },
    { "PathLongerThanTheKernelTakes", { sh("mkdir root; " + enterDeepFolder) },
        { sh(enterDeepFolder + "echo > f") }, { { "CMF", deepPath() } } },
    // New folders.
    { "TreeCopied",
        { sh("mkdir -p root out/$(seq -s/ 5)/x; cd out; for i in $(seq 125); do "
             "mkdir $i.d; echo > $i.d/f; done") },
        { sh("cp -r out root/out") }, {}, { "root" } },
    { "WrittenWhileNoProcessorWasFree", { sh("mkdir root"), longAgo },
        { longAgo, withoutProcessor(true), sh("mkdir -p root/d/e; echo > root/d/e/f"), longAgo,
            longAgo, withoutProcessor(false) },
        {}, { "root" } },
    { "RemovedWhileInUse", { sh("mkdir -p root/d/e") },
        { sh("exec 3< root/d/e; rm -r root/d; mkdir -p root/d/e"), sync, sh("echo > root/d/e/f") },
        { { "CDO", "root/d" }, { "CDO", "root/d/e" }, { "CMF", "root/d/e/f" } } },
    { "FilledFasterThanRead", { sh("mkdir root") },
        { held(true), sh("mkdir root/d; cd root/d; for i in $(seq 1100); do echo > $i; done"),
            held(false) },
        {}, { "root" } },
    { "ManyTruncated", { sh("mkdir root; cd root; for i in $(seq 300); do echo old > $i; done") },
        { truncateAll }, numbered("MF", "root/") },
    { "ManyFoldersRemoved",
        { sh("mkdir -p root/kept/d; for i in $(seq 400); do mkdir root/" + longName + "$i; done") },
        { sh("rm -r root/n*"), sync, sh("mv root/kept root/moved; echo > root/moved/d/f") },
        joined(numbered("DO", "root/" + longName, 400),
            { { "RO", "root/kept" }, { "RO", "root/moved" }, { "CMF", "root/moved/d/f" } }) },
    // Moved folders.
    { "MovedOut", { oldTree },
        { sh("mv root/a out/a; echo > out/a/early"), sync, sh("echo > out/a/deep/late") },
        { { "RDO", "root/a" } } },
    { "NamesExchanged", { oldTree, sh("mkdir root/b") },
        { exchange("root/a", "root/b"), sync, sh("echo > root/a/f; echo > root/b/deep/f") },
        { { "RO", "root/a" }, { "RO", "root/b" }, { "CMF", "root/a/f" },
            { "CMF", "root/b/deep/f" } } },
    { "FileAndFolderExchanged", { oldTree, sh("echo > root/b") },
        { exchange("root/a", "root/b"), sync, sh("echo > root/b/deep/f; echo > root/a") },
        { { "RmfO", "root/a" }, { "RfO", "root/b" }, { "CMF", "root/b/deep/f" } } },
    { "MovedOverAnEmptyOne", { oldTree, sh("mkdir root/b") },
        { sh("mv -T root/a root/b; echo > root/b/deep/f") },
        { { "RO", "root/a" }, { "RO", "root/b" }, { "CMF", "root/b/deep/f" } } },
    // Found by the random model. All steps are done before the stream reads its first event.
    { "NewFolderOfOldFiles", { oldTree, longAgo },
        { held(true), sh("mkdir root/n; mv out/t root/n/t; echo > root/n/t/deep/f"), held(false) },
        { { "CO", "root/n" }, { "ROc", "root/n/t" }, { "CmF", "root/n/t/deep/f" } } },
    { "WrittenNewAndMoved", { sh("mkdir root") },
        { held(true), sh("mkdir root/a; echo > root/a/f"), longAgo, sh("mv root/a root/b"),
            held(false) },
        { { "CRO", "root/a" }, { "RO", "root/b" }, { "CmF", "root/b/f" } } },
    { "NewInAMovedFolder", { oldTree },
        { held(true), sh("mkdir root/n; mv root/a root/n; mkdir root/n/a/d; echo > root/n/a/d/f"),
            held(false) },
        { { "CO", "root/n" }, { "RDO", "root/a" }, { "CO", "root/n/a/d" },
            { "CmF", "root/n/a/d/f" } } },
    { "ExchangedAndGone", { oldTree, sh("mkdir -p root/d/b") },
        { held(true), exchange("root/a", "root/d/b"), sh("rm -r root/d/b/deep; mv root/d root/e"),
            held(false), sync, sh("echo > root/e/b/f; echo > root/a/g") },
        { { "RO", "root/a" }, { "RO", "root/d/b" }, { "RO", "root/d" }, { "RO", "root/e" },
            { "DO", "root/d/b/deep" }, { "DF", "root/d/b/deep/x" }, { "CMF", "root/e/b/f" },
            { "CMF", "root/a/g" } } },
    { "ExchangedWithAnotherPlace", { oldTree, longAgo },
        { held(true), exchange("out/t", "root/a"), held(false), sync, sh("echo > root/a/deep/f") },
        { { "RDOs", "root/a" }, { "CMF", "root/a/deep/f" } } },
    { "ExchangedBeforeItWasListed", { oldTree, longAgo },
        { held(true), exchange("out/t", "root/a"), sh("mkdir root/b"), exchange("root/a", "root/b"),
            sh("echo > root/b/deep/f"), held(false), sync, sh("echo > root/b/g; echo > root/a/g") },
        { { "RDOsc", "root/a" }, { "CRO", "root/b" }, { "CmF", "root/b/deep/f" },
            { "CMF", "root/b/g" }, { "CMF", "root/a/g" } } },
    { "MovedTwiceAndReplaced", { oldTree },
        { held(true), sh("mv root/a root/b; mv root/b out/b; mkdir root/b"), held(false), sync,
            sh("echo > root/b/f; echo > out/b/silent") },
        { { "RO", "root/a" }, { "RCDO", "root/b" }, { "CMF", "root/b/f" } } },
    { "MovedThereAndBackAndReplaced", { oldTree },
        { held(true), sh("mv root/a root/b; mv root/b root/a; mkdir root/b"), held(false), sync,
            sh("echo > root/a/deep/f; echo > root/b/f") },
        { { "RO", "root/a" }, { "RCO", "root/b" }, { "CMF", "root/a/deep/f" },
            { "CMF", "root/b/f" } } },
    { "ArrivedTwiceAndGone", { sh("mkdir -p root out/t out/u") },
        { held(true), sh("mv out/t root/t; mv -T out/u root/t; rmdir root/t"), held(false) },
        { { "RDO", "root/t" } } },
    { "LinkedInPlaceOfAFolder", { sh("mkdir -p root/f; echo > f") },
        { held(true), sh("rmdir root/f; ln f root/f"), held(false) }, { { "CDFO", "root/f" } } },
    // Roots.
    { "SameRootTwice", { sh("mkdir root") }, { sh("echo > root/f") }, { { "CMF", "root/f" } }, {},
        { "root", "root/", "root" } },
    { "RootThroughLink", { sh("mkdir -p real/d; ln -s real link") }, { sh("echo > real/d/f") },
        { { "CMF", "link/d/f" } }, {}, { "link" } },
    { "RootThroughRelativeLink", { sh("mkdir -p in real/d; ln -s .././real in/link") },
        { sh("echo > real/d/f") }, { { "CMF", "in/link/d/f" } }, {}, { "in/link" } },
    { "RootsWithinEachOther", { sh("mkdir -p root/a; echo > root/a/f") },
        { sh("mv root/a/f root/a/g") }, { { "RF", "root/a/f" }, { "RF", "root/a/g" } }, {},
        { "root", "root/a" } },
    { "FolderUnderThreeSpellings", { sh("mkdir -p real/d; ln -s real/d one; ln -s real/d two") },
        { sh("echo > real/d/f"), sync, sh("rm -r real/d"), sync,
            sh("mkdir real/d; echo > real/d/g") },
        { { "CMDF", "real/d/f" }, { "CMDF", "one/f" }, { "CMDF", "two/f" }, { "CDO", "real/d" },
            { "CDOX", "one" }, { "CDOX", "two" }, { "CmF", "real/d/g" }, { "CmF", "one/g" },
            { "CmF", "two/g" } },
        {}, { "real", "one", "two" } },
    { "FolderUnderTwoSpellings", { sh("mkdir -p real/d; ln -s real/d link") },
        { sh("echo > real/d/f") }, { { "CMF", "real/d/f" }, { "CMF", "link/f" } }, {},
        { "real", "link" } },
    { "LinkLeadsElsewhere", { sh("mkdir one two; ln -s one link") },
        { sh("ln -sfn two link"), sync, sh("echo > two/f; echo > one/g") },
        { { "CDOX", "link" }, { "CMF", "link/f" } }, {}, { "link" } },
    { "RootMissingAtStart", {}, { sh("mkdir -p top/root/d; echo > top/root/d/f") },
        { { "COX", "top/root" }, { "cO", "top/root/d" }, { "CmF", "top/root/d/f" } }, {},
        { "top/root" } },
    { "RootRemovedWhileInUse", { sh("mkdir root") },
        { sh("exec 3< root; rmdir root"), sync, sh("mkdir root"), sync, sh("echo > root/f") },
        { { "CDOX", "root" }, { "CMF", "root/f" } } },
    { "RootMovedAwayAndBack", { oldTree, longAgo },
        { sh("mv root away"), sync, sh("echo > away/silent"), longAgo, sh("mv away root"), sync,
            sh("echo > root/a/f") },
        { { "CDOX", "root" }, { "CMF", "root/a/f" } } },
    { "AncestorRenamed", { sh("mkdir -p top/mid/root; echo > top/mid/root/old"), longAgo },
        { sh("mv top away; echo > away/mid/root/silent"), longAgo, sh("mv away top"), sync,
            sh("echo > top/mid/root/f") },
        { { "CDOX", "top/mid/root" }, { "CMF", "top/mid/root/f" } }, {}, { "top/mid/root" } },
    // Limits.
    { "MovedUnseen", { oldTree, sh("mkdir root/b"), longAgo },
        { held(true), flood, sh("mv root/a root/c; echo > root/c/deep/f"),
            exchange("root/b", "root/c"), held(false), sync, sh("echo > root/c/g") },
        { { "OS", "root" }, { "OS", "beat" }, { "rmcO", "root/c" }, { "so", "root/b" },
            { "CmF", "root/b/deep/f" }, { "CMF", "root/c/g" } } },
    { "TooManyFoldersToWatch",
        { sh("mkdir -p root/a/b root/c; echo > root/a/b/old"), watchLimit(9) },
        { sh("echo > root/a/b/f; echo > root/c/f"), sync, watchLimit(1000),
            sh("mkdir -p root/a/b/d; echo > root/a/b/d/g") },
        { { "CmF", "root/a/b/f" }, { "CmF", "root/c/f" }, { "CO", "root/a/b/d" } },
        { "root/a/b/d" } },
    { "NoDescriptorToSpare", { sh("mkdir -p root/a; echo > root/a/old"), noDescriptors(true) },
        { sh("echo > root/a/f"), sync, noDescriptors(false), sync, sh("echo >> root/a/old") },
        { { "CmF", "root/a/f" }, { "MF", "root/a/old" }, { "OS", "root" }, { "OS", "beat" } } },
    { "RootMadeByAnotherComputer",
        { [](auto& stage) { stage.calls().simulatesNetworkShare = true; } },
        { sh("mkdir root; echo > root/f") }, { { "COX", "root" }, { "CmF", "root/f" } } },
    { "NotWrittenOnAPolledDrive",
        { [](auto& stage) { stage.calls().simulatesNetworkShare = true; },
            sh("mkdir root out; for f in 1 2 3 4 5 6; do echo $f > root/$f; done; echo > out/7; "
               "echo long > out/8; touch -d 2001-02-03 root/* out/*"),
            longAgo },
        { sh("mv root/1 root/old; touch root/2; touch -d 2002-02-03 root/3; chmod 600 root/4; "
             "touch -d 2000-02-03 root/5; mv out/8 root/6; mv out/7 root/7"),
            copyAsWeDo("root/4", "root/copy") },
        { { "RF", "root/old" }, { "RF", "root/6" }, { "RF", "root/7" }, { "RF", "root/copy" } } },
    { "WrittenOnAPolledDrive",
        { [](auto& stage) { stage.calls().simulatesNetworkShare = true; },
            sh("mkdir root; for f in 1 2 3 4; do echo $f > root/$f; done; touch -d 2001-02-03 "
               "root/*"),
            longAgo },
        { sh("echo >> root/1; echo x > root/2; echo new > new; mv new root/3; mkdir root/d; "
             "echo > root/d/f; echo > root/f; touch -d 2001-02-03 early; mv early root/d/old") },
        { { "MF", "root/1" }, { "MF", "root/2" }, { "MF", "root/3" }, { "CF", "root/f" },
            { "CO", "root/d" }, { "CmF", "root/d/f" }, { "rf", "root/d/old" } } },
    { "FolderReadableLater",
        { sh("mkdir -p root/locked; chmod 300 root/locked"),
            [](auto& stage) { stage.calls().unreadableName = "/locked"; } },
        { sh("echo > root/locked/unseen; chmod 700 root/locked"), sync,
            sh("echo > root/locked/f") },
        { { "CmF", "root/locked/unseen" }, { "CMF", "root/locked/f" } } },
    { "SomeFoldersReadableLater",
        { sh("for d in a b c; do mkdir -p root/$d/locked; chmod 300 root/$d/locked; done"),
            [](auto& stage) { stage.calls().unreadableName = "/locked"; } },
        { sh("rmdir root/a/locked"), sync, sh("echo > root/b/locked/f; chmod 700 root/b/locked"),
            sync, sh("echo > root/c/locked/g; chmod 700 root/c/locked") },
        { { "DO", "root/a/locked" }, { "CmF", "root/b/locked/f" }, { "CmF", "root/c/locked/g" } } },
    { "NewAndMovedIntoAnArrivedFolder", { oldTree },
        { held(true), sh("mkdir root/n; echo > root/n/f"), longAgo,
            sh("mv out/t root/t; mv root/n root/t/deep"), held(false) },
        { { "CRDO", "root/n" }, { "RO", "root/t" }, { "CO", "root/t/deep/n" },
            { "CmF", "root/t/deep/n/f" } } },
    { "ExchangedInAMovedFolder", { oldTree, sh("mkdir root/a/o") },
        { held(true), sh("mkdir root/n; mv root/a root/n"), exchange("root/n/a/deep", "root/n/a/o"),
            sh("mkdir root/n/a/o/d; echo > root/n/a/o/d/f"), held(false) },
        { { "CO", "root/n" }, { "RDO", "root/a" }, { "RO", "root/n/a/deep" },
            { "RO", "root/n/a/o" }, { "CO", "root/n/a/o/d" }, { "CmF", "root/n/a/o/d/f" } } },
};

/// Mounts a separate file system on `folder`.
Step mountOn(const char* folder)
{
    return sh("mount -t tmpfs none " + std::string(folder));
}

const std::vector<Scenario> mountScenarios = {
    { "MountedOverRoot", { sh("mkdir root; echo > root/covered") },
        { mountOn("root"), sync, sh("echo > root/f"), sync, sh("umount root"), sync,
            sh("echo > root/g") },
        { { "CDOX", "root" }, { "CMF", "root/f" }, { "CMF", "root/g" } } },
    { "MountedOverFolderInside", { sh("mkdir -p root/a/b") },
        { mountOn("root/a"), sync, sh("mkdir root/a/c"), sync,
            sh("echo > root/a/c/f; umount -l "
               "root/a"),
            sync, sh("echo > root/a/b/g") },
        { { "OS", "root/a" }, { "CO", "root/a/c" }, { "CMF", "root/a/c/f" },
            { "CMF", "root/a/b/g" } } },
    { "MountedAndWrittenAtOnce", { sh("mkdir -p root/a") },
        { held(true), mountOn("root/a"), sh("echo > root/a/f"), held(false) },
        { { "OS", "root/a" }, { "CmF", "root/a/f" } } },
    { "DriveWithOldMixes",
        { sh("mkdir root drive"), mountOn("drive"), sh("mkdir drive/d; echo > drive/d/old"),
            longAgo },
        { sh("mount --bind drive root"), sync, sh("echo > root/d/f"), sync, sh("umount -l root") },
        { { "CDOX", "root" }, { "CMF", "root/d/f" } } },
    { "AncestorMountedOver", { sh("mkdir -p top/root; echo > top/root/old"), longAgo },
        { mountOn("top"), sync, sh("mkdir top/root; echo > top/root/f"), sync, sh("umount top"),
            sync, sh("echo > top/root/g") },
        { { "CDOX", "top/root" }, { "CmF", "top/root/f" }, { "CMF", "top/root/g" } }, {},
        { "top/root" } },
    { "TwoPlacesOfOneFolder", { sh("mkdir -p root/a/d root/b; mount --bind root/a root/b") },
        { sh("echo > root/a/d/f; mkdir root/a/e; echo > root/a/e/g") },
        { { "CMF", "root/a/d/f" }, { "CMF", "root/b/d/f" }, { "CO", "root/a/e" },
            { "CO", "root/b/e" }, { "CmF", "root/a/e/g" }, { "CmF", "root/b/e/g" } } },
    { "FolderWithinItself", { sh("mkdir -p root/a/b; mount --bind root root/a/b") },
        { sh("echo > root/f") }, { { "CMF", "root/f" } } },
};

class StreamScenarios : public testing::TestWithParam<Scenario> { };

TEST_P(StreamScenarios, ReportJustThat)
{
    run(GetParam());
}

class StreamMountScenarios : public StreamScenarios { };

TEST_P(StreamMountScenarios, ReportJustThat)
{
    if (!canMount())
        GTEST_SKIP() << "mounting is not permitted";
    run(GetParam());
}

std::string scenarioName(const testing::TestParamInfo<Scenario>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Plain, StreamScenarios, testing::ValuesIn(scenarios), scenarioName);

INSTANTIATE_TEST_SUITE_P(
    Mounts, StreamMountScenarios, testing::ValuesIn(mountScenarios), scenarioName);

} // namespace
} // namespace stemvault::file_events
