#include "Commands.h"
#include "Exact.h"
#include "Terminal.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

namespace {

namespace fs = std::filesystem;

// The file that the copy goes to. A regular file gets its name when it is complete, so that whatever happens the name
// stands for the old file or for the whole new one; other targets are written as they are.
class Target
{
public:
  explicit Target(const std::string& name)
    : fName(name == "-" ? "standard output" : name)
  {
    std::error_code none;
    const fs::file_status status = name == "-" ? fs::file_status() : fs::status(name, none);
    if (name == "-")
      fFile = FLopen("fd:1", "w");
    else if (fs::exists(status) && !fs::is_regular_file(status))
      fFile = FLopenpath(name.c_str(), "w");
    else
    {
      fReal = fs::exists(status) ? fs::canonical(name, none) : fs::path(name);
      fFile = createBeside(fReal.string(), fPartial);
      removeOnSignal(fPartial);
      if (fs::exists(status))
        fs::permissions(fPartial, status.permissions(), none);
    }
    if (!fFile)
      throw Failure(fName, FLstrerror(flerrno));
  }

  ~Target()
  {
    if (fFile)
      FLclose(fFile);
    if (!fPartial.empty())
    {
      std::error_code none;
      fs::remove(fPartial, none);
      keepOnSignal(fPartial);
    }
  }

  Target(const Target&) = delete;
  Target& operator=(const Target&) = delete;

  _FLfile* file() const { return fFile; }
  const std::string& name() const { return fName; }

  // The copy is complete.
  void finish()
  {
    if (FLclose(std::exchange(fFile, nullptr)) != 0)
      throw Failure(fName, FLstrerror(flerrno));
    if (fPartial.empty())
      return;
    std::error_code failure;
    fs::rename(fPartial, fReal, failure);
    if (failure)
      throw Failure(fName, failure.message());
    keepOnSignal(fPartial);
    fPartial.clear();
  }

private:
  const std::string fName;
  fs::path fReal;       // where links lead to
  std::string fPartial; // what is written while it is not complete
  _FLfile* fFile = nullptr;
};

} // namespace

int copy(Console& console, Source& source, const std::string& target)
{
  std::error_code none;
  if (target != "-" && fs::equivalent(source.name(), target, none))
    throw Failure(target, "input and output are the same file");
  source.spool();
  Exact exact(console, source);
  if (exact.status() != kValid)
  {
    console.complain(source.name() + ": not copied");
    return exact.status();
  }
  Target output(target);
  exact.write(source, output.name(), output.file());
  source.close();
  output.finish();
  return kValid;
}
