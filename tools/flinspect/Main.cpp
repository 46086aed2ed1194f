// flinspect: shows, checks, compares and unpacks chunk files.

#include "Commands.h"
#include "Inspection.h"
#include "Terminal.h"

#include "Foundation/Debug/Texception.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>

namespace {

// "tree" may be left out: it is put in front of arguments whose first word is no command.
std::vector<std::string> withCommand(std::vector<std::string> arguments, const CLI::App& app)
{
  const auto first =
    std::find_if(arguments.begin(), arguments.end(), [](const std::string& a) { return a.size() < 2 || a[0] != '-'; });
  const bool asksForHelp = std::any_of(
    arguments.begin(), first, [](const std::string& a) { return a == "-h" || a == "--help" || a == "--version"; });
  const bool isCommand =
    first != arguments.end() &&
    !app.get_subcommands([&](const CLI::App* command) { return command->get_name() == *first; }).empty();
  if (!arguments.empty() && !asksForHelp && !isCommand)
    arguments.insert(arguments.begin(), "tree");
  return arguments;
}

bool wantsColour(const std::string& when)
{
  const char* const none = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  if (when != "auto")
    return when == "always";
  return isTerminal(1) && (none == nullptr || *none == 0) && (terminal == nullptr || std::string(terminal) != "dumb");
}

int run(int count, char** words)
{
  CLI::App app("Shows, checks, compares and unpacks chunk files (the IFF family: AIFF, ILBM, 8SVX, FOR4, ...).\n"
               "Exit status: 0 the file is valid, 1 it is not, 2 flinspect could not run.",
               "flinspect");
  app.set_version_flag("--version", "flinspect " FLINSPECT_VERSION);
  app.footer("flinspect COMMAND --help tells more of a command.");
  app.require_subcommand(1);
  app.fallthrough();

  bool openForms = false;
  app.add_flag("--open-forms", openForms, "Take FILE for a name as FLopen does: pipe:COMMAND, host:path, file.Z, ...");

  std::string file;
  std::vector<std::string> files;
  std::vector<std::string> paths;
  std::string colour = "auto";
  std::string path;
  std::string directory;
  std::string target;
  bool strict = false;
  bool isQuiet = false; // puts nothing before its end
  std::function<int(Console&, Source&)> command;

  CLI::App* const tree =
    app.add_subcommand("tree", "Show the nesting, a line for each chunk (the word may be left out)");
  tree->add_option("FILE", files, "Files; \"-\" is standard input")->required();
  tree->add_option("--color", colour, "When to colour")->check(CLI::IsMember({"auto", "always", "never"}));
  tree->callback([&] {
    const bool inColour = wantsColour(colour);
    command = [&, inColour](Console& console, Source& source) {
      if (files.size() > 1)
        console.put((source.name() == files[0] ? "" : "\n") + printable(source.name()) + ":\n");
      return showTree(console, source, inColour);
    };
  });

  CLI::App* const checking = app.add_subcommand("check", "Report every departure from the format, with its offset");
  checking->add_option("FILE", files, "Files; \"-\" is standard input")->required();
  checking->add_flag("--strict", strict, "An oddity makes a file invalid too");
  checking->callback([&] {
    isQuiet = files.size() == 1;
    command = [&](Console& console, Source& source) { return check(console, source, strict); };
  });

  const auto addFile = [&](CLI::App* subcommand) {
    subcommand->add_option("FILE", file, "File; \"-\" is standard input")->required();
  };

  CLI::App* const dumping = app.add_subcommand("dump", "Show the data of a chunk in hexadecimal");
  addFile(dumping);
  dumping->add_option("PATH", path, "The chunk, as in FORM/COMM or FORM/LIST[2]/FORM/BODY")->required();
  dumping->callback([&] { command = [&](Console& console, Source& source) { return dump(console, source, path); }; });

  CLI::App* const extracting = app.add_subcommand("extract", "Write the data of chunks into files in a directory");
  addFile(extracting);
  extracting->add_option("PATH", paths, "Chunks, or groups with what is in them; without: all chunks");
  extracting->add_option("-d,--directory", directory, "The directory; made when missing")->required();
  extracting->callback(
    [&] { command = [&](Console& console, Source& source) { return extract(console, source, paths, directory); }; });

  CLI::App* const differing = app.add_subcommand(
    "diff", "Compare two files chunk by chunk; exit status 0 the same, 1 different, 2 one is not valid");
  differing->add_option("A", file, "File; one of both may be \"-\", standard input")->required();
  differing->add_option("B", target, "The other file")->required();
  differing->callback([&] {
    command = [&](Console& console, Source& source) {
      if (file == "-" && target == "-")
        throw Failure("standard input", "is there only once");
      Source other(console, target, openForms);
      return diff(console, source, other);
    };
  });

  CLI::App* const events = app.add_subcommand("events", "Show what a parser's receiver is told");
  addFile(events);
  events->callback([&] { command = showEvents; });

  CLI::App* const json = app.add_subcommand("json", "Show everything as a JSON document");
  addFile(json);
  json->callback([&] { command = showJson; });

  CLI::App* const copying = app.add_subcommand("copy", "Write the file anew, with its sizes and padding in order");
  addFile(copying);
  copying->add_option("OUT", target, "The new file; \"-\" is standard output")->required();
  copying->callback([&] {
    isQuiet = target != "-";
    command = [&](Console& console, Source& source) { return copy(console, source, target); };
  });

  for (CLI::App* each : app.get_subcommands({}))
    each->footer("--open-forms goes with every command; flinspect --help tells of it.");

  try
  {
    std::vector<std::string> arguments = withCommand({words + std::min(count, 1), words + count}, app);
    std::reverse(arguments.begin(), arguments.end());
    app.parse(arguments);
  }
  catch (const CLI::ParseError& wrong)
  {
    if (wrong.get_exit_code() == 0) // --help and --version
      return app.exit(wrong);
    // Where an argument is missing there may be an option that is none, which tells more.
    std::string problem = wrong.what();
    if (wrong.get_exit_code() == int(CLI::ExitCodes::RequiredError))
    {
      for (const std::string& each : app.remaining(true))
      {
        if (each != "--")
          problem = "The following argument was not expected: " + each;
      }
    }
    std::cerr << "flinspect: " << printable(problem) << "\nflinspect --help tells more.\n";
    return kCouldNotRun;
  }

  if (files.empty())
    files.push_back(file);
  Console console;
  console.allowProgress(isQuiet);
  int worst = kValid;
  for (const std::string& name : files)
  {
    try
    {
      Source source(console, name, openForms);
      worst = std::max(worst, command(console, source));
    }
    catch (const OutputFailure&)
    {
      throw;
    }
    catch (const Failure& failure)
    {
      worst = kCouldNotRun;
      console.complain(failure.what());
    }
    console.endProgress();
  }
  console.flush();
  return worst;
}

} // namespace

int main(int count, char** words)
{
  setBinaryStreams();
  try
  {
    return run(count, words);
  }
  catch (const TmemoryException&) // what operator new throws where the library is loaded
  {
    std::fputs("flinspect: not enough memory\n", stderr);
  }
  catch (const std::exception& failure)
  {
    std::fputs(("flinspect: " + printable(failure.what()) + "\n").c_str(), stderr);
  }
  return kCouldNotRun;
}
