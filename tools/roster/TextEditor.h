// A text that the user edits in a program of theirs.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// Whether there is an editor to start: $VISUAL, else $EDITOR; on a terminal also the system's own.
bool hasEditor();

/// A file with a text, in a private folder of its own, that goes with this object unless it is kept.
///
/// Ownership: owns folder and file.
/// Threads:   one.
/// Errors:    what cannot be made, started or read back raises a Failure with status 1.
class EditedFile {
public:
    explicit EditedFile(std::string_view text);
    ~EditedFile();
    EditedFile(const EditedFile&) = delete;
    EditedFile& operator=(const EditedFile&) = delete;

    /// Lets the user edit it, and answers the text as it is then. An editor that ends with another status
    /// than 0 raises a Failure: the user wants none of it. What was typed is then kept.
    std::string edit();
    /// The file stays, so that no typing is lost; answers where.
    std::string keep();

private:
    std::string read() const;

    const std::string _text;
    std::filesystem::path _folder;
    bool _isKept = false;
};
