#include "VespermoorEditor/Utils/System.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringIterable.h>
#include <Corrade/Containers/StringStl.h>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/Format.h>
#include <portable-file-dialogs.h>
#include <uuid/uuid.h>

#include "VespermoorEditor/Utils/Text.h"

namespace VespermoorEngine {

namespace {

using ListFlag = Utility::Path::ListFlag;
using Visitor = Function<bool(Containers::StringView)>;
using Enter = Function<void(Containers::StringView, bool)>;

/* The entry at a path, with links followed. A missing entry equals no other. */
struct Entry {
    bool isSame(const Entry& other) const {
        return exists && other.exists && device == other.device && inode == other.inode;
    }

    bool exists = false;
    bool isLink = false;
    bool isDirectory = false;
    dev_t device = 0;
    ino_t inode = 0;
};

/* Costs one system call, two for a link. */
Entry entryAt(const Containers::StringView path) {
    const Containers::String name = Containers::String::nullTerminatedView(path);
    struct stat status;
    if (lstat(name.data(), &status) != 0) {
        return {};
    }
    const bool link = S_ISLNK(status.st_mode);
    if (link && stat(name.data(), &status) != 0) {
        return {};
    }
    return {true, link, S_ISDIR(status.st_mode), status.st_dev, status.st_ino};
}

/* Whether the link `path` leads to a directory on the way to it: the one at the first `startSize`
   bytes of the path, or any between there and the link. Looks up each of them again, which only
   links pay for. */
bool leadsBack(const Containers::StringView path, const std::size_t startSize) {
    const Entry target = entryAt(path);
    Containers::StringView passed = path.prefix(startSize);
    while (passed.size() < path.size()) {
        if (entryAt(passed).isSame(target)) {
            return true;
        }
        const Containers::StringView rest = path.exceptPrefix(passed.size() + 1);
        passed = path.prefix(rest.findOr('/', path.end()).begin());
    }
    return false;
}

/* Appends the path of each of the `names`, if there are any, in `directory`. */
void appendNames(Containers::Array<Containers::String>& paths, const Containers::String& directory,
                 const Containers::Optional<Containers::Array<Containers::String>>& names) {
    if (!names) {
        return;
    }
    for (const Containers::String& name : *names) {
        arrayAppend(paths, Utility::Path::join(directory, name));
    }
}

/* Everything that a walk from `path` finds, in breadth-first order: a directory comes before its
   entries. Calls `enter` for every path to visit, for each directory before it is listed. */
Containers::Array<Containers::String> collect(const Containers::StringView path, const Enter& enter,
                                              const Utility::Path::ListFlags listFlags,
                                              const VisitFlags visitFlags) {
    Containers::Array<Containers::String> paths;
    arrayAppend(paths, Containers::String{path});
    for (std::size_t i = 0; i != paths.size(); ++i) {
        const bool link = isSymlink(paths[i]);
        const bool directory = Utility::Path::isDirectory(paths[i]);
        if (enter && (i != 0 || visitFlags >= VisitFlag::IncludeRoot)) {
            enter(paths[i], directory);
        }
        if (directory && (!link || (visitFlags >= VisitFlag::FollowSymlinks &&
                                    !leadsBack(paths[i], path.size())))) {
            /* A copy, since appending may move the list's strings. */
            const Containers::String parent = paths[i];
            appendNames(paths, parent, Utility::Path::list(parent, listFlags));
        }
        if (!(visitFlags >= VisitFlag::Recursive)) {
            break;
        }
    }
    return paths;
}

/* Topmost missing directory on the way to `path`, or `path` itself if its parent exists. */
Containers::StringView topmostMissing(Containers::StringView path) {
    for (;;) {
        const Containers::StringView parent = Utility::Path::split(path).first();
        if (parent.isEmpty() || parent == path || Utility::Path::exists(parent)) {
            return path;
        }
        path = parent;
    }
}

/* Directories that a copy makes for itself: the destination, and the topmost new directory above
   it. They are not copied if they are inside the source. */
struct OwnDirectories {
    bool contain(const Entry& entry) const {
        return entry.isSame(destination) || entry.isSame(topmost);
    }

    Entry destination;
    Entry topmost;
};

} // namespace

bool isSymlink(const Containers::StringView path) {
    struct stat status;
    if (lstat(Containers::String::nullTerminatedView(path).data(), &status) != 0) {
        const char* const reason = std::strerror(errno);
        Utility::Error{} << "isSymlink(): Unable to stat path" << path << ":" << reason;
        return false;
    }
    return S_ISLNK(status.st_mode);
}

bool visitPath(const Containers::StringView path, Visitor visitor,
               const Utility::Path::ListFlags listFlags, const VisitFlags visitFlags) {
    return visitPath(path, Enter{}, std::move(visitor), listFlags, visitFlags);
}

bool visitPath(const Containers::StringView path, const Enter enter, const Visitor visitor,
               const Utility::Path::ListFlags listFlags, const VisitFlags visitFlags) {
    if (!Utility::Path::exists(path)) {
        return false;
    }
    const Containers::Array<Containers::String> paths =
        collect(path, enter, listFlags | ListFlag::SortAscending, visitFlags);
    const std::size_t first = visitFlags >= VisitFlag::IncludeRoot ? 0 : 1;
    for (std::size_t i = paths.size(); i != first; --i) {
        if (!visitor(paths[i - 1])) {
            return false;
        }
    }
    return true;
}

bool copyRecursive(const Containers::StringView source, const Containers::StringView destination) {
    const Entry present = entryAt(destination);
    if (present.isDirectory && present.isSame(entryAt(source))) {
        return true;
    }
    const Containers::String topmost = topmostMissing(destination);
    OwnDirectories own;
    Containers::Array<Containers::String> paths;
    arrayAppend(paths, Containers::String{});
    for (std::size_t i = 0; i != paths.size(); ++i) {
        /* A copy, since appending may move the list's strings. */
        const Containers::String relative = paths[i];
        const Containers::String origin = Utility::Path::join(source, relative);
        const Containers::String target = Utility::Path::join(destination, relative);
        const Entry entry = entryAt(origin);
        if (!entry.isDirectory) {
            /* If the target is the source under another name, opening it for writing would empty
               it. */
            if ((present.exists && entry.isSame(entryAt(target))) ||
                !Utility::Path::copy(origin, target)) {
                return false;
            }
            continue;
        }
        if (own.contain(entry)) {
            continue;
        }
        Utility::Path::make(target);
        if (i == 0) {
            own = {entryAt(destination), entryAt(topmost)};
        }
        if (!entry.isLink || !leadsBack(origin, source.size())) {
            appendNames(paths, relative, Utility::Path::list(origin, ListFlag::SkipDotAndDotDot));
        }
    }
    return true;
}

bool deleteRecursive(const Containers::StringView path) {
    return visitPath(path, Visitor{Corrade::DefaultInit, Utility::Path::remove},
                     ListFlag::SkipDotAndDotDot, VisitFlag::IncludeRoot | VisitFlag::Recursive);
}

namespace {

using namespace Corrade::Containers::Literals;

constexpr std::size_t readBlock = 8192;
constexpr std::size_t uuidLength = UUID_STR_LEN - 1;

/* Reads `file` to its end. The string takes over the buffer. */
Containers::String readAll(std::FILE* const file) {
    Containers::Array<char> block{Corrade::NoInit, readBlock};
    Containers::Array<char> bytes;
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), file)) {
        arrayAppend(bytes, block.prefix(count));
    }
    const std::size_t size = bytes.size();
    arrayAppend(bytes, '\0');
    return Implementation::takeString(bytes, size);
}

/* The status is dropped: a caller could do nothing about a missing program. */
void launch(const Containers::String& line) {
    [[maybe_unused]] const int status = std::system(line.data());
}

/* The trash of this user, existing or not; the environment decides which. */
Containers::Optional<Containers::String> trashRoot() {
    const Containers::String dataHome = std::getenv("XDG_DATA_HOME");
    if (!dataHome.isEmpty()) {
        return dataHome + "/Trash"_s;
    }
    const Containers::Optional<Containers::String> home = Utility::Path::homeDirectory();
    if (!home) {
        return {};
    }
    return *home + (*home == "/root"_s ? "/.Trash"_s : "/.local/share/Trash"_s);
}

/* Moves `path` into the trash `directory`, with a UUID after its name if the name is taken. A
   dangling link does not count as taken; the move replaces it. */
bool moveInto(const Containers::StringView directory, const Containers::StringView path) {
    Containers::String target = Utility::Path::join(directory, Utility::Path::split(path).second());
    if (Utility::Path::exists(target)) {
        target = target + generateUUID();
    }
    return Utility::Path::move(path, target);
}

/* The path or its nearest existing parent, so that a dialog opens close to it. */
Containers::StringView startPath(Containers::StringView path) {
    while (!path.isEmpty() && !Utility::Path::exists(path)) {
        path = Utility::Path::split(path).first();
    }
    return path;
}

std::vector<std::string> filterList(const Containers::StringIterable& filters) {
    std::vector<std::string> list;
    list.reserve(filters.size());
    for (const Containers::StringView filter : filters) {
        list.emplace_back(filter);
    }
    return list;
}

Containers::String chosenPath(const std::string& path) {
    return Containers::String{Utility::Path::fromNativeSeparators(Containers::StringView{path})};
}

/* The path of one file, which is split at its newlines like the list of several. */
std::string joinedLines(const std::vector<std::string>& lines) {
    std::string path = lines.front();
    for (std::size_t i = 1; i != lines.size(); ++i) {
        path += '\n' + lines[i];
    }
    return path;
}

static_assert(static_cast<int>(NotificationIcon::Info) == static_cast<int>(pfd::icon::info) &&
              static_cast<int>(NotificationIcon::Warning) == static_cast<int>(pfd::icon::warning) &&
              static_cast<int>(NotificationIcon::Error) == static_cast<int>(pfd::icon::error) &&
              static_cast<int>(NotificationIcon::Question) ==
                  static_cast<int>(pfd::icon::question));

} // namespace

Containers::String appDirectory() {
    const Containers::Optional<Containers::String> home = Utility::Path::homeDirectory();
    if (!home) {
        return {};
    }
    const Containers::String directory = Utility::Path::join(*home, ".VespermoorEngine"_s);
    return Containers::String{Utility::Path::fromNativeSeparators(directory)};
}

int runShellCommandCapture(const Containers::StringView command, Containers::String& output,
                           const Containers::StringView workingDirectory) {
    const Containers::String prefix =
        workingDirectory.isEmpty()
            ? Containers::String{}
            : Utility::format("cd \"{}\" && ", Utility::Path::toNativeSeparators(workingDirectory));
    const Containers::String line = Utility::format("{}/bin/sh -lc '{}' 2>&1", prefix, command);
    std::FILE* const pipe = popen(line.data(), "r");
    if (!pipe) {
        return 1;
    }
    output = readAll(pipe);
    return pclose(pipe);
}

int setShellEnvironment(
    const Containers::Array<Containers::Pair<Containers::String, Containers::String>>&
        environment) {
    int result = 0;
    for (const Containers::Pair<Containers::String, Containers::String>& variable : environment) {
        if (const int status = setenv(variable.first().data(), variable.second().data(), 0)) {
            result = status;
        }
    }
    return result;
}

int changeDirectory(const Containers::StringView path) {
    return chdir(Containers::String::nullTerminatedView(path).data());
}

void openBrowser(const Containers::StringView url) {
    launch(Utility::format("{} {}", "xdg-open", url));
}

void openWithSystemFilebrowser(const Containers::StringView path) {
    launch(Utility::format("{} \"{}\"", "xdg-open", path));
}

void openWithSystemDefault(const Containers::StringView path,
                           const Containers::StringView workingDirectory) {
    launch(Utility::format("cd \"{}\" && {} \"{}\"", workingDirectory, "xdg-open", path));
}

Containers::String generateUUID() {
    uuid_t uuid;
    uuid_generate_random(uuid);
    Containers::String text{Corrade::NoInit, uuidLength};
    uuid_unparse(uuid, text.data());
    return text;
}

Containers::Optional<Containers::String> findTrashPath() {
    Containers::Optional<Containers::String> root = trashRoot();
    if (!root) {
        return {};
    }
    Containers::String files = *root + "/files"_s;
    if (Utility::Path::exists(files)) {
        return files;
    }
    if (Utility::Path::isDirectory(*root)) {
        return root;
    }
    return {};
}

bool moveToTrash(const Containers::StringIterable paths) {
    const Containers::Optional<Containers::String> trash = findTrashPath();
    for (const Containers::StringView path : paths) {
        if (!(trash ? moveInto(*trash, path) : deleteRecursive(path))) {
            return false;
        }
    }
    return true;
}

Containers::String openFolderDialog(const Containers::StringView title,
                                    const Containers::StringView defaultPath) {
    return chosenPath(
        pfd::select_folder{std::string{title}, std::string{defaultPath}, pfd::opt::none}.result());
}

Containers::Array<Containers::String> openFileDialog(const Containers::StringView title,
                                                     const Containers::StringView defaultPath,
                                                     const Containers::StringIterable& filters,
                                                     const bool multiple) {
    pfd::open_file dialog{std::string{title}, std::string{startPath(defaultPath)},
                          filterList(filters), multiple ? pfd::opt::multiselect : pfd::opt::none};
    std::vector<std::string> chosen = dialog.result();
    if (!multiple && !chosen.empty()) {
        chosen = {joinedLines(chosen)};
    }
    Containers::Array<Containers::String> paths;
    arrayReserve(paths, chosen.size());
    for (const std::string& path : chosen) {
        arrayAppend(paths, chosenPath(path));
    }
    return paths;
}

Containers::String saveFileDialog(const Containers::StringView title,
                                  const Containers::StringView defaultPath,
                                  const Containers::StringIterable& filters) {
    return chosenPath(pfd::save_file{std::string{title}, std::string{startPath(defaultPath)},
                                     filterList(filters), pfd::opt::none}
                          .result());
}

void notification(const Containers::StringView title, const Containers::StringView message,
                  const NotificationIcon icon) {
    pfd::notify{std::string{title}, std::string{message}, static_cast<pfd::icon>(icon)};
}

} // namespace VespermoorEngine
