#include "Foundation/UnicodeText.h"
#include "Fuzz/Fuzzer.h"
#include "LinuxDesktop/UserDefaults/UserDefaultsFile.h"
#include "Support/FakeDispatch.h"
#include "Support/TemporaryFolder.h"

// Reads and writes the settings file. SettingsFuzzer tests the program's record inside it.
namespace stemvault {

namespace {

/// Stores the value in the file, and a second copy of what the file held under "k".
void change(const std::string& path, const std::string& value)
{
    FakeDispatch dispatch;
    SystemCalls calls;
    calls.fsync = [](int) { return 0; }; // It would take most of the run time.
    user_defaults::UserDefaultsFile defaults(path, dispatch, calls);
    const auto bytes = defaults.data("k");
    const auto date = defaults.date("k");
    defaults.setData("value", value);
    defaults.setData("bytes", bytes.value_or(""));
    defaults.setDate("date", date.value_or(WallTime()));
    defaults.synchronize();
    const user_defaults::UserDefaultsFile again(path, dispatch);
    require(again.data("value") == value, "any text can be kept");
    require(!bytes || again.data("bytes") == bytes, "bytes that were read are written the same");
    require(!date || again.date("date") == date, "a date that was read is written the same");
}

} // namespace

void feed(std::string_view input)
{
    const std::string text(input);
    const TemporaryFolder folder;
    const std::string path = folder.write("connect.json", text);
    change(path, isValidUTF8(text) ? text : "text");
    auto before = user_defaults::parsedRecord(text);
    auto after = user_defaults::RecordFile(path).read();
    if (!before) {
        require(folder.read(*folder.names("").rbegin()) == text, "what is no record is kept aside");
        return;
    }
    for (const char* ours : { "value", "bytes", "date" }) {
        before->erase(ours);
        after.erase(ours);
    }
    require(*before == after, "what we do not know is left as it was");
}

} // namespace stemvault
