// Files that appear under their name only when they are whole.
#ifndef LUMASCAN_OUTPUT_FILE_H
#define LUMASCAN_OUTPUT_FILE_H

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

// Written beside its name under another one (temporaryName.h). One that is neither committed nor
// discarded is discarded with the record.
struct OutputFile {
  OutputFile() = default;
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  FILE* stream = nullptr;
  std::string path;
  int folder = -1;            // the open folder that it is in, which may be renamed meanwhile
  std::string temporaryName;  // in that folder
};

// Starts a file. False, with errno set, when it cannot be created. What is written until it is
// committed is a new file: no link is followed, and no other file is written over.
bool openOutput(const std::string& path, OutputFile* file);

// Sees that all is on the disk, then gives the file its name, in place of what had it before.
// False, with errno set, when a write to the stream or a step here has failed: there is no trace of
// the file then, and what had its name is still there. The folder is seen to last; when
// that fails, the file is in place but may not outlive a loss of power.
bool commitOutput(OutputFile* file);

// Gives the file up. Nothing is left of it.
void discardOutput(OutputFile* file);

// A whole file of what `write` puts into the stream. Returns an empty text, or what went wrong, for
// a person to read.
std::string writeOutput(const std::string& path, const std::function<void(FILE*)>& write);

// Whether what went wrong, in the words of the functions above, will go wrong with every other
// file, too: the disk is full, broken or only to be read.
bool isOfWholeDisk(const std::string& error);

// Writes all of a text.
void writeText(std::string_view text, FILE* out);

// Removes what processes that are gone have left of files in the folder: what they had not
// finished.
void removeLeftovers(const std::string& folder);

#endif
