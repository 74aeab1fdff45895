#pragma once

#include "FileManager/CopyFault.h"
#include "FileManager/FileCopy.h"
#include "Foundation/FileDescriptor.h"

#include <string>

namespace stemvault {

/// An item that is being made in the folder where it will stand. Until it is committed it bears no
/// name or a temporary one, and it goes with this object.
class StagedItem {
public:
    /// `finalName` is free, or what bears it may be replaced as the options say. The folder stays
    /// open for as long as the staged item lives.
    StagedItem(int folder, std::string finalName, const CopyOptions& options);
    StagedItem(const StagedItem&) = delete;
    StagedItem& operator=(const StagedItem&) = delete;
    ~StagedItem();

    /// A file that has no name anywhere, so that even a killed process leaves nothing. Not every
    /// file system has these.
    [[nodiscard]] bool createUnnamedFile();
    [[nodiscard]] bool createFile();
    [[nodiscard]] bool createFolder();

    /// The open file or folder, to be filled.
    [[nodiscard]] int item() const { return descriptor.get(); }

    /// Gives an unnamed file its temporary name; any other has it already.
    [[nodiscard]] bool giveName();

    /// Closes a file and puts the item under its final name, in one step for whoever looks. What
    /// is replaced stays until the new item stands, and stays for good if anything fails.
    [[nodiscard]] CopyOutcome commit();

    /// Whether somebody else has removed the item under its temporary name.
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
    void settle();

    int folder;
    std::string finalName;
    const CopyOptions& options;
    FileDescriptor descriptor;
    bool isFolder = false;
    bool isUnnamed = false;
    std::string name; ///< Empty while there is none to remove.
    std::string displaced; ///< The name that the old item bears now.
};

} // namespace stemvault
