// The rules about where things lie, what they are called and how they may be used.
#pragma once

#include <array>

#include "tools/wickfield-bundle/check/Rule.h"

namespace wickfield_bundle {

inline constexpr auto ruleTable = std::to_array<Rule>({
    // the installer's own parts
    {"not-a-bundle", Severity::error, "There is no installer to check.",
     "Name the installer's folder, whose name ends in \".app\" and which holds a folder \"Contents\"."},
    {"unreadable", Severity::error, "Something in the bundle cannot be read.",
     "Give yourself the right to read it, or take it out of the bundle."},
    {"too-deep", Severity::error, "A folder lies so deep that no system can open it by its path.",
     "Take it out of the bundle."},
    {"special-file", Severity::error,
     "A pipe, a socket or a device lies in the bundle; no archive carries it and no copy is made of it.",
     "Take it out of the bundle."},
    {"info-missing", Severity::error, "Contents/Info.plist is missing; macOS starts no application without it.",
     "Make the bundle again from the installer's template."},
    {"info-unreadable", Severity::error, "Contents/Info.plist is not a property list with a dictionary.",
     "Make the bundle again from the installer's template, or mend the file; plutil -lint says where it is wrong."},
    {"info-executable", Severity::error,
     "Info.plist does not name the program in Contents/MacOS, or in Contents/Linux where there is no other.",
     "Set CFBundleExecutable to the name of the program's file."},
    {"info-identifier", Severity::error, "Info.plist has no CFBundleIdentifier, by which macOS knows an application.",
     R"(Give it a name of your own, such as com.example.reverb.installer: "identifier" in wickfield.json, or )"
     R"(--identifier.)"},
    {"info-identifier-characters", Severity::warning,
     "The bundle's identifier has characters other than letters, digits, \"-\" and \".\".",
     R"(Keep to letters, digits, "-" and ".", since macOS keeps permissions by this name: "identifier" in )"
     R"(wickfield.json, or --identifier.)"},
    {"info-kind", Severity::warning, "Info.plist does not say that the bundle is an application.",
     "Set CFBundlePackageType to APPL."},
    {"program-missing", Severity::error, "The bundle has no program in Contents/MacOS or Contents/Linux.",
     "Make the bundle again from the installer's template."},
    {"program-mac-missing", Severity::warning, "The bundle has no program for macOS.",
     "Make it from the template for macOS, unless it is meant for Linux alone."},
    {"program-linux-missing", Severity::note, "The bundle has no program for Linux.", ""},
    {"program-not-executable", Severity::error, "The installer's program may not be executed.",
     "Give the file the right to be executed (chmod 755), and pack the bundle with a tool that keeps it."},

    // what the tree holds
    {"tree-missing", Severity::error,
     "The folder Contents/Resources/PluginStructure is missing; the installer calls itself damaged.",
     "Make the bundle again, with the files that it is to install."},
    {"tree-not-a-folder", Severity::error,
     "Contents/Resources/PluginStructure is not a folder, so nothing is installed.",
     "Make it a folder that mirrors the customer's disk."},
    {"tree-empty", Severity::warning, "The tree has nothing to install; the installer reports success all the same.",
     R"(Name the files, unless scripts are all that is wanted: "tree" or "items" in wickfield.json, or --tree )"
     R"(or --item.)"},
    {"tree-top-item", Severity::error,
     "An item at the very top of the tree is put into whatever folder the installer happens to run in.",
     "Move it into the folder of the tree that stands for its place on the customer's disk."},
    {"tree-endless", Severity::error,
     "Links between folders make the installation walk through the same folders over and over.",
     "Take the links between folders out of the tree."},
    {"folder-without-items", Severity::note,
     "A folder holds nothing that is installed; the installer makes no empty folders.",
     "Have a script make the folder if the plug-in needs it."},
    {"hidden-skipped", Severity::warning, "An item whose name begins with \".\" is not installed.",
     "Give it a name without the \".\", or have the postinstall script put it in place."},
    {"clutter-skipped", Severity::note,
     "A file that a file browser or a version control left behind lies in the tree; it is not installed.", ""},
    {"clutter-installed", Severity::warning,
     "What a file browser, an archiver or a version control left behind is installed.", "Take it out of the tree."},

    // placeholders and other people's homes
    {"placeholder-case", Severity::error,
     "A path looks like a placeholder, such as \"/Users/user\", but has other capitals, so it is not replaced.",
     "Write the placeholder in exactly its letters."},
    {"placeholder-by-prefix", Severity::error,
     "A name merely begins like a placeholder, but is taken for it: the rest of the name becomes a folder in the "
     "customer's home.",
     "Put the files below the placeholder itself, or rename the folder."},
    {"placeholder-unknown", Severity::error,
     "A folder is called as if a shell were to replace it by a home; it is installed under that very name.",
     "Use the placeholder \"/Users/user\" for the customer's home."},
    {"other-home", Severity::error,
     "Files are put into somebody's home that customers do not have: most likely that of the machine that built them.",
     "Put them below \"/Users/user\", which stands for the customer's home, or into a folder that all share."},

    // destinations
    {"destination-refused", Severity::error,
     "The destination is a standard folder of the system, which is never replaced.",
     "Put the item into the folder instead of in its place."},
    {"destination-collision", Severity::error,
     "Two items are put at one place, or one into the other: the one that comes later removes the one before.",
     "Rename one of the two, or leave one out."},
    {"destination-system", Severity::warning,
     "The destination belongs to the system, where on a Mac not even an administrator may write.",
     "Choose a place in /Library, /usr/local or the customer's home."},
    {"destination-root", Severity::warning,
     "The destination is in a folder that a Mac does not have at the top of its disk, and that nobody can make there.",
     "Choose a place in /Library, /Applications or the customer's home."},
    {"destination-volume", Severity::warning,
     "The destination is on another disk, which is refused wherever no disk of that name is mounted.",
     "Choose a place on the customer's own disk."},
    {"destination-temporary", Severity::warning, "The destination is a folder that the system empties.",
     "Choose a place that lasts, in /Library or the customer's home."},

    // links
    {"link-loop", Severity::error, "A link leads to itself.", "Make it lead to a file, or take it out."},
    {"link-to-builder", Severity::error, "A link leads to a place on the machine that built the bundle.",
     "Make it a relative link to something that is installed with it, or put the file itself there."},
    {"link-leaves-bundle", Severity::error, "A link among the installer's own parts leads out of the bundle.",
     "Put the file itself into the bundle."},
    {"link-leaves-tree", Severity::error, "A link climbs higher than the top of the tree.",
     "Make it a relative link to something within the tree."},
    {"link-dangling", Severity::error,
     "A link leads to something that neither lies in the bundle nor is installed; an installation that comes to such a "
     "link on its own fails.",
     "Put what it leads to beside it, or take it out."},
    {"link-dangling-in-package", Severity::warning, "A link in a plug-in's bundle leads to nothing.",
     "Make the plug-in's bundle again; copying it without its links' targets is what usually does this."},
    {"link-order", Severity::error,
     "A link on its own leads to another item, and the installation fails when it comes to the link first; the order "
     "is that of the customer's disk.",
     "Have the postinstall script make the link, or put both into one plug-in's bundle."},
    {"link-outside", Severity::warning,
     "A link on its own leads to something that is not installed; where the customer does not have it the installation "
     "fails.",
     "Install what it leads to along with it, or have the postinstall script make the link."},
    {"link-leaves-package", Severity::warning,
     "A link in a plug-in's bundle leads out of it, to what a customer may not have.",
     "Put the file itself into the plug-in's bundle."},
    {"link-followed", Severity::warning,
     "A link to a folder is not installed as a link: the installer copies what is in the folder, under the link's "
     "name.",
     "Have the postinstall script make the link, or take it out if the files are not wanted twice."},
    {"link-folder-outside", Severity::error,
     "A link to a folder outside the bundle: the installer copies what it finds there on the customer's own disk.",
     "Put the folder itself into the tree, or have the postinstall script make the link."},

    // names
    {"name-collision-case", Severity::error,
     "Names in one folder differ in upper and lower case alone; most Macs can keep only one of them.",
     "Rename one of them."},
    {"name-collision-form", Severity::error,
     "Names in one folder differ only in how their accents are written; a Mac takes them for one.",
     "Rename one of them."},
    {"name-not-utf8", Severity::error, "A name is not UTF-8; a Mac refuses to make such a file.", "Rename it."},
    {"name-control", Severity::warning, "A name has control characters.", "Rename it."},
    {"name-colon", Severity::warning,
     "A name has a \":\", which a Mac's Finder shows as \"/\" and some file systems refuse.", "Rename it."},
    {"name-blank-end", Severity::warning,
     "A name begins or ends with a blank, or ends with a \".\"; some file systems and archivers drop it.",
     "Rename it."},
    {"name-too-long", Severity::warning, "A name is too long for some of the file systems of a Mac.",
     "Give it a name of at most 255 characters, where an accent may count as one of its own."},
    {"path-too-long", Severity::error, "A path is longer than the 1,023 bytes that macOS takes.",
     "Use shorter names, or fewer folders within one another."},

    // rights and sizes
    {"mode-source-unreadable", Severity::error,
     "Its owner may not read something in the tree; so the customer, who owns the bundle once it is unpacked, cannot "
     "install it.",
     "Give the owner the right to read it (chmod u+rX)."},
    {"mode-part-unreadable", Severity::error,
     "Its owner may not read a part of the installer itself; so neither may the customer, who owns the bundle once it "
     "is "
     "unpacked.",
     "Give everybody the right to read it (chmod a+rX)."},
    {"mode-part-private", Severity::warning,
     "Only its owner may read a part of the installer itself: it works for whoever unpacked it, not for other users of "
     "the computer.",
     "Give everybody the right to read it (chmod a+rX)."},
    {"mode-private", Severity::warning,
     "Only its owner may read something that is installed for all: other users of the computer cannot use it.",
     "Give everybody the right to read it (chmod a+rX)."},
    {"mode-writable", Severity::warning,
     "Everybody may change something that is installed for all: any program can put its own code there.",
     "Take away the others' right to write (chmod o-w)."},
    {"mode-read-only", Severity::warning,
     "The owner of something that is installed may not write to it: the installer asks for an administrator's "
     "password, only to give it a fresh date.",
     "Give the owner the right to write (chmod u+w)."},
    {"mode-set-id", Severity::warning,
     "A file runs with its owner's or group's rights (set-id); who that is on the customer's disk depends on who "
     "installs it.",
     "Take the bits away (chmod ug-s)."},
    {"quarantined", Severity::warning,
     "A file carries the mark of a download; its copies keep it, and a Mac refuses or asks before using them.",
     "Remove the mark from all files: xattr -dr com.apple.quarantine on a Mac."},
    {"file-huge", Severity::warning,
     "A file is larger than 4 GiB, which older archivers cannot unpack and FAT disks cannot hold.",
     "Split it, or have the plug-in fetch it."},
    {"sizes", Severity::note, "How much is installed, and what is the largest of it.", ""},
});

}  // namespace wickfield_bundle
