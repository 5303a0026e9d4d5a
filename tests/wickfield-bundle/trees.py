"""Trees of files, as values that can be compared. Paths are bytes."""
import os
import stat


def attributes_of(path):
    """The user's own extended attributes; none where the file system has none."""
    try:
        return {name: os.getxattr(path, name, follow_symlinks=False)
                for name in os.listxattr(path, follow_symlinks=False) if name.startswith("user.")}
    except OSError:
        return {}


def description(path):
    """What is at the path itself: kind, mode, attributes, and the content of a file or target of a link."""
    status = os.lstat(path)
    if stat.S_ISLNK(status.st_mode):
        return "link", os.readlink(path)
    mode = stat.S_IMODE(status.st_mode)
    if stat.S_ISDIR(status.st_mode):
        return "folder", mode, attributes_of(path)
    with open(path, "rb") as file:
        return "file", mode, attributes_of(path), file.read()


def paths_below(folder):
    """All of them, from the folder; folders end with "/". Links are not followed."""
    found = []
    for here, folders, files in os.walk(folder):
        inner = os.path.relpath(here, folder)
        prefix = b"" if inner == b"." else inner + b"/"
        for name in folders:
            is_link = os.path.islink(os.path.join(here, name))
            found.append(prefix + name + (b"" if is_link else b"/"))
        found.extend(prefix + name for name in files)
    return sorted(found)


def described(path):
    """The item with all that lies in it, by paths from there; b"" is the item itself."""
    found = {b"": description(path)}
    if found[b""][0] == "folder":
        for inner in paths_below(path):
            found[inner] = description(os.path.join(path, inner.rstrip(b"/")))
    return found


def write_times(path):
    """Of the files in a folder, by paths from there."""
    return {inner: os.lstat(os.path.join(path, inner)).st_mtime_ns for inner in paths_below(path)
            if not inner.endswith(b"/") and not os.path.islink(os.path.join(path, inner))}
