// The installed desktop entries of applications, as an index by identifier, window class and program.
// Owned by whoever identifies processes. Not synchronised: one thread at a time.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvo {

struct DesktopEntry {
  std::string identifier;  // path below its folder, "/" written as "-", without the ending
  std::string path;
  std::optional<std::string> name;  // in the person's language
  std::optional<std::string> icon;
  std::string windowClass;
  std::string program;  // see programOfCommand; as written, so absolute or to be found on the search path
  bool listed = true;   // shown in menus
};

class DesktopEntries {
 public:
  // Folders in order of precedence: an identifier found in an earlier one shadows later ones.
  explicit DesktopEntries(std::vector<std::filesystem::path> folders);

  // Bounds of what is looked at: folders inside folders, each but once, files and folders in all, and their contents.
  // Those of one folder leave those of others their room.
  static constexpr int deepest = 4;
  static constexpr int mostFiles = 5'000;
  static constexpr std::size_t mostBytes = 16'000'000;

  // The "applications" folders of XDG_DATA_HOME and XDG_DATA_DIRS, then the usual ones.
  static std::vector<std::filesystem::path> standardFolders();

  // Reads the folders again if entries came or went since; costs one stat a folder otherwise. An entry
  // rewritten in place goes unnoticed. Pointers got before become invalid.
  void refresh();

  // All answer null for nothing found.
  const DesktopEntry* withIdentifier(const std::string& identifier) const;
  const DesktopEntry* withPath(const std::string& path) const;
  const DesktopEntry* withWindowClass(const std::string& windowClass) const;
  // By base name; an absolute program of an entry has to be the same file.
  const DesktopEntry* withProgram(const std::string& program) const;
  // By the folder of a package, such as /usr/lib/mixer/: an entry whose program is a script named after it.
  const DesktopEntry* withWrapperOf(const std::string& program) const;
  // An entry that a snap package brought: "package_program", else any other of the package.
  const DesktopEntry* ofSnap(const std::string& package, const std::string& program) const;

 private:
  using Stamp = std::filesystem::file_time_type;

  bool isCurrent() const;
  void read();
  void readFolder(const std::filesystem::path& root, const std::filesystem::path& folder, int depth);
  const DesktopEntry* best(const std::function<int(const DesktopEntry&)>& score) const;

  std::vector<std::filesystem::path> folders_;
  std::set<std::filesystem::path> visited_;  // without links
  int seen_ = 0;
  std::size_t room_ = 0;                           // for contents
  std::map<std::filesystem::path, Stamp> stamps_;  // every folder read, those inside the roots too
  // Nothing stands for an entry that says it does not exist; it shadows those of its name all the same.
  std::map<std::string, std::optional<DesktopEntry>> entries_;
};

}  // namespace orvo
