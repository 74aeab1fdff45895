#pragma once

#include "FileManager/CopyFault.h"
#include "FileManager/FileCopy.h"
#include "Foundation/FileDescriptor.h"

#include <string>

namespace stemvault {

/// An item that is being created in its destination folder. Until it is committed it has no name or
/// a temporary one, and it is removed when this object is destroyed.
class StagedItem {
public:
    /// `finalName` is unused, or the options allow replacing the item that has it. The folder must
    /// stay open for as long as the staged item exists.
    StagedItem(int folder, std::string finalName, const CopyOptions& options);
    StagedItem(const StagedItem&) = delete;
    StagedItem& operator=(const StagedItem&) = delete;
    ~StagedItem();

    /// Creates a file that has no name anywhere, so that even a killed process leaves nothing
    /// behind. Not every file system supports these.
    [[nodiscard]] bool createUnnamedFile();
    [[nodiscard]] bool createFile();
    [[nodiscard]] bool createFolder();

    /// The open file or folder, to be filled.
    [[nodiscard]] int item() const { return descriptor.get(); }

    /// Gives an unnamed file a temporary name; any other item already has one.
    [[nodiscard]] bool linkTemporaryName();

    /// Closes a file and gives the item its final name, in one step if the file system can. An item
    /// that is replaced stays until the new one has the name, and for good if anything fails.
    [[nodiscard]] CopyOutcome commit();

    /// Whether another program has removed the item under its temporary name.
    [[nodiscard]] bool isGone() const;

private:
    template <typename Call> bool underFreshName(Call call);
    [[nodiscard]] bool isInAppendOnlyFolder() const;
    [[nodiscard]] bool linkAs(const char* fresh) const;
    [[nodiscard]] CopyOutcome linkToFreeName();
    [[nodiscard]] CopyOutcome closeFile();
    [[nodiscard]] CopyOutcome moveToFreeName();
    [[nodiscard]] CopyOutcome moveOverOld();
    [[nodiscard]] CopyOutcome exchangeWithOld();
    [[nodiscard]] CopyOutcome moveOldAside();
    void finishCommit();

    int folder;
    std::string finalName;
    const CopyOptions& options;
    FileDescriptor descriptor;
    bool isFolder = false;
    bool isUnnamed = false;
    std::string name; ///< The temporary name; empty while there is none to remove.
    std::string displaced; ///< The current name of the old item.
};

} // namespace stemvault
