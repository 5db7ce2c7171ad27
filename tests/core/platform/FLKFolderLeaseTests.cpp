#include <gtest/gtest.h>

#include <fstream>

#include "core/platform/FLKFolderLease.h"
#include "FLKStoreTestSupport.h"

namespace fs = std::filesystem;
using namespace flktest;

namespace {
fs::path folderWithAFile(const fs::path& folder) {
    fs::create_directories(folder / "media");
    std::ofstream(folder / "media" / "a.mp4") << "recording";
    return folder;
}
fs::path lockOf(const fs::path& folder) { return folder.string() + ".lock"; }
// The lease comes first, as a document takes it before making its folder.
std::unique_ptr<FLKFolderLease> leasedFolderWithAFile(const fs::path& folder) {
    auto lease = FLKFolderLease::leaseForFolder(folder);
    folderWithAFile(folder);
    return lease;
}
}  // namespace

// flock(2) locks belong to open files, not processes: a lease held here
// looks to the sweep exactly as one held by another running process.
TEST(FLKFolderLease, SweepClearsOnlyFoldersNobodyHolds) {
    auto store = freshFolder();
    auto inUse = store / "InUse.tmp";
    auto lease = leasedFolderWithAFile(inUse);
    ASSERT_NE(lease, nullptr);
    // What a crashed process leaves: its folder and an unlocked lock file.
    auto abandoned = folderWithAFile(store / "Abandoned.tmp");
    std::ofstream(lockOf(abandoned)) << "";
    // A folder made without a lease is not the sweep's to judge.
    auto foreign = folderWithAFile(store / "Foreign.tmp");

    EXPECT_FALSE(FLKFolderLease::isAbandoned(inUse));
    EXPECT_TRUE(FLKFolderLease::isAbandoned(abandoned));
    EXPECT_FALSE(FLKFolderLease::isAbandoned(foreign));
    // Asking takes nothing away: the holder's lease stands.
    EXPECT_FALSE(FLKFolderLease::isAbandoned(inUse));

    FLKFolderLease::removeAbandonedFolders(store);
    EXPECT_TRUE(fs::exists(inUse / "media" / "a.mp4"));
    EXPECT_TRUE(fs::exists(lockOf(inUse)));
    EXPECT_FALSE(fs::exists(abandoned));
    EXPECT_FALSE(fs::exists(lockOf(abandoned)));
    EXPECT_TRUE(fs::exists(foreign / "media" / "a.mp4"));

    fs::remove_all(inUse);
    lease.reset();
    EXPECT_FALSE(fs::exists(lockOf(inUse)));
    EXPECT_EQ(std::distance(fs::directory_iterator(store), fs::directory_iterator()), 1);  // Foreign.tmp
}

// A folder its owner could not remove keeps its lock file, so the next
// sweep still finds it.
TEST(FLKFolderLease, AFolderLeftBehindIsClearedByTheNextSweep) {
    auto store = freshFolder();
    auto folder = store / "Left.tmp";
    ASSERT_NE(leasedFolderWithAFile(folder), nullptr);
    EXPECT_TRUE(fs::exists(lockOf(folder)));
    FLKFolderLease::removeAbandonedFolders(store);
    EXPECT_FALSE(fs::exists(folder));
    EXPECT_FALSE(fs::exists(lockOf(folder)));
    // A lease taken again on the same name works from scratch.
    auto again = FLKFolderLease::leaseForFolder(folder);
    ASSERT_NE(again, nullptr);
    FLKFolderLease::removeAbandonedFolders(store);
    EXPECT_TRUE(fs::exists(lockOf(folder)));
}
