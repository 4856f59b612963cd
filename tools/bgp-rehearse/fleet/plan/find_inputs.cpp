#include "fleet/plan/find_inputs.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <system_error>
#include <utility>

#include "base/refuse.h"
#include "base/text_escape.h"
#include "fleet/plan/collection.h"
#include "fleet/plan/packed_inputs.h"
#include "fleet/plan/repository.h"

namespace bgp_rehearse {

namespace {

namespace fs = std::filesystem;

std::string with_slash(const std::string& folder)
{
    return folder.back() == '/' ? folder : folder + "/";
}

std::string content_of_list(const std::string& file)
{
    errno = 0;
    std::ifstream in(file == "-" ? "/dev/stdin" : file, std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(in), {}};
    if (!in.is_open() || content.empty()) {
        refuse("@" + file, errno != 0 ? std::strerror(errno) : "the list is empty");
    }
    return content;
}

class Finder {
public:
    explicit Finder(const Search& search) : collection_(search.all_names, search.max_bytes) {}

    Found find(const std::vector<std::string>& paths)
    {
        for (const std::string& path : paths) {
            if (path.empty()) {
                refuse("\"\"", "a path is missing");
            }
            if (path.size() > 1 && path.front() == '@') {
                take_list(path.substr(1));
            } else {
                take_path(path);
            }
        }
        return collection_.settled();
    }

private:
    void take_path(const std::string& path)
    {
        struct stat status {};
        if (stat(path.c_str(), &status) != 0) {
            refuse(path, std::strerror(errno));
        }
        if (S_ISDIR(status.st_mode)) {
            if (is_repository(path)) {
                collect_repository(path, &collection_);
            } else {
                take_folder(path);
            }
        } else if (!S_ISREG(status.st_mode)) {
            refuse(path, "this is neither a file nor a folder");
        } else if (!collect_archive(path, &collection_)) {
            take_single(path);
        }
    }

    void take_list(const std::string& file)
    {
        const std::string content = content_of_list(file);
        const char end = content.find('\0') != std::string::npos ? '\0' : '\n';
        std::size_t line = 1;
        for (std::size_t start = 0; start < content.size(); ++line) {
            const std::size_t stop = std::min(content.find(end, start), content.size());
            if (stop == start) {
                refuse("@" + file, fmt::format("name {} is empty", line));
            }
            take_single(content.substr(start, stop - start));
            start = stop + 1;
        }
    }

    // A file that was named, whatever its name is.
    void take_single(const std::string& path)
    {
        const std::string name = tidy_path(path);
        const bool absolute = name.front() == '/';
        std::optional<uint32_t>& place = absolute ? absolute_ : relative_;
        if (!place) {
            FoundPlace here;
            here.path = absolute ? "" : with_slash(collection_.absolute("."));
            place = collection_.add_place(std::move(here));
        }
        collection_.add_file(*place, escaped_name(name), path);
    }

    void take_folder(const std::string& path)
    {
        const std::string name = tidy_path(path);
        FoundPlace place;
        place.shown = name == "." ? "" : escaped_name(with_slash(name));
        place.path = with_slash(collection_.absolute(path));
        const uint32_t number = collection_.add_place(std::move(place));
        std::vector<std::string> folders = {""};  // below this one, each with a slash at its end
        while (!folders.empty()) {
            const std::string below = std::move(folders.back());
            folders.pop_back();
            look_into(number, below, &folders);
        }
    }

    void look_into(uint32_t place, const std::string& below, std::vector<std::string>* folders)
    {
        const std::string folder = collection_.place(place).path + below;
        std::error_code failed;
        fs::directory_iterator entry(folder, failed);
        for (; !failed && entry != fs::directory_iterator(); entry.increment(failed)) {
            take_entry(place, *entry, below, folders);
        }
        if (failed && below.empty()) {
            refuse(folder, failed.message());
        }
        if (failed) {
            collection_.pass_over("folder that cannot be read");
            collection_.remark(
                fmt::format("{}: {}; what is in this folder is not in the plan", escaped(folder), failed.message()));
        }
    }

    void take_entry(uint32_t place, const fs::directory_entry& entry, const std::string& below,
                    std::vector<std::string>* folders)
    {
        std::error_code failed;
        const std::string name = below + entry.path().filename().string();
        const bool link = entry.is_symlink(failed);
        const fs::file_status status = entry.status(failed);
        if (fs::is_directory(status)) {
            if (link) {
                collection_.pass_over("link to a folder");
            } else {
                folders->push_back(name + "/");
            }
        } else if (!collection_.wants(name)) {
            collection_.pass_over(kOtherName);
        } else if (link && status.type() == fs::file_type::not_found) {
            collection_.pass_over("link to nothing");
        } else if (fs::is_other(status)) {
            collection_.pass_over(kSpecial);
        } else {
            collection_.add_file(place, collection_.place(place).shown + escaped_name(name), entry.path());
        }
    }

    Collection collection_;
    std::optional<uint32_t> absolute_;  // the places of files that were named
    std::optional<uint32_t> relative_;
};

}  // namespace

Found find_inputs(const Search& search)
{
    return Finder(search).find(search.paths);
}

}  // namespace bgp_rehearse
