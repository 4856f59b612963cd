// Configuration files as they lie about: compressed, in archives, of another kind, or no files at all.
#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <thread>

#include "platform/refused_text.h"
#include "support/scratch_folder.h"
#include "xml/config_writer.h"

namespace bgp_test {
namespace {

using bgp_platform::schema::Schema;
using bgp_platform::store::Configuration;
using bgp_platform::xml::config_text;
using bgp_platform::xml::LoadError;
using bgp_platform::xml::read_config_file;
using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

constexpr char kBelongs[] =
    "; a configuration stands in <config xmlns=\"http://tail-f.com/ns/config/1.0\">, or in NETCONF's <config>, <data> "
    "or "
    "<rpc-reply>";

class ConfigInput : public testing::Test {
protected:
    // What a file comes to: the configuration as it is written, or why it is refused.
    static std::string loaded(const std::string& path)
    {
        Configuration configuration(Schema::builtin());
        try {
            read_config_file(path, &configuration);
        } catch (const LoadError& error) {
            return error.what();
        }
        return config_text(configuration);
    }

    std::string loaded_as(const std::string& name, const std::string& content) const
    {
        return loaded(folder.file(name, content));
    }

    // How a file of that content is refused, its name left out.
    std::string refusal_of_file(const std::string& content) const
    {
        const std::string text = loaded_as("odd.xml", content);
        EXPECT_THAT(text, StartsWith(folder / "odd.xml"));
        return text.substr((folder / "odd.xml").size());
    }

    // Entries of a list so many that the compressed data comes in pieces.
    static std::string large()
    {
        std::string entries;
        unsigned int number = 1;
        for (int i = 0; i < 20000; ++i) {
            number = number * 1664525 + 1013904223;
            entries += "<bgp><as-number>" + std::to_string(number) + "</as-number></bgp>\n";
        }
        return document(router(entries));
    }

    const ScratchFolder folder;
};

using Setting = int (*)(archive*);

struct Packer {
    std::string name;
    Setting filter;
};

const std::vector<Packer>& packers()
{
    static const std::vector<Packer> all = {{"gzip", archive_write_add_filter_gzip},
                                            {"xz", archive_write_add_filter_xz},
                                            {"zstd", archive_write_add_filter_zstd},
                                            {"bzip2", archive_write_add_filter_bzip2},
                                            {"lz4", archive_write_add_filter_lz4}};
    return all;
}

std::string packed(Setting format, Setting filter, const std::vector<std::string>& files)
{
    archive* const writer = archive_write_new();
    EXPECT_EQ(format(writer), ARCHIVE_OK);
    EXPECT_EQ(filter(writer), ARCHIVE_OK);
    std::string result(1 << 22, '\0');
    std::size_t used = 0;
    archive_write_set_bytes_in_last_block(writer, 1);
    EXPECT_EQ(archive_write_open_memory(writer, result.data(), result.size(), &used), ARCHIVE_OK);
    for (const std::string& content : files) {
        archive_entry* const entry = archive_entry_new();
        archive_entry_set_pathname(entry, "edge.xml");
        archive_entry_set_filetype(entry, AE_IFREG);
        archive_entry_set_size(entry, static_cast<la_int64_t>(content.size()));
        EXPECT_EQ(archive_write_header(writer, entry), ARCHIVE_OK);
        EXPECT_EQ(archive_write_data(writer, content.data(), content.size()), static_cast<la_ssize_t>(content.size()));
        archive_entry_free(entry);
    }
    archive_write_free(writer);
    result.resize(used);
    return result;
}

std::string compressed(const std::string& text, Setting filter)
{
    return packed(archive_write_set_format_raw, filter, {text});
}

TEST_F(ConfigInput, CompressedFile_IsReadWhateverItIsCalled)
{
    const std::string text = large();
    const std::string expected = loaded_as("plain.xml", text);
    ASSERT_THAT(expected, HasSubstr("<as-number>"));
    for (const Packer& packer : packers()) {
        EXPECT_EQ(loaded_as("edge.xml", compressed(text, packer.filter)), expected) << packer.name;
        EXPECT_EQ(loaded_as("edge", compressed(compressed(text, packer.filter), archive_write_add_filter_gzip)),
                  expected)
            << packer.name << " in gzip";
    }
}

TEST_F(ConfigInput, GzipInSeveralMembers_IsReadWhole)
{
    const std::string text = large();
    const std::string first = compressed(text.substr(0, 1000), archive_write_add_filter_gzip);
    const std::string second = compressed(text.substr(1000), archive_write_add_filter_gzip);
    const std::string expected = loaded_as("plain.xml", text);
    EXPECT_EQ(loaded_as("edge.gz", first + second), expected);
    EXPECT_EQ(loaded_as("edge.gz", first + second + std::string(512, '\0')), expected) << "padded like a tape";
}

TEST_F(ConfigInput, CompressedDataCutOffAnywhere_IsToldWithTheFile)
{
    const std::string text = large();
    for (const Packer& packer : packers()) {
        const std::string whole = compressed(text, packer.filter);
        for (const std::size_t size : {std::size_t{60}, whole.size() / 2, whole.size() - 9}) {
            EXPECT_EQ(loaded_as("edge.xml", whole.substr(0, size)),
                      (folder / "edge.xml") + ": " + packer.name + " data ends early")
                << size << " of " << whole.size();
        }
    }
}

TEST_F(ConfigInput, GzipCutOffAtAnyByte_IsRefused)
{
    const std::string whole = compressed(document(""), archive_write_add_filter_gzip);
    for (std::size_t size = 2; size < whole.size(); ++size) {
        EXPECT_EQ(loaded_as("edge.xml", whole.substr(0, size)), (folder / "edge.xml") + ": gzip data ends early")
            << size;
    }
}

// A digit that turned into another one is still XML.
TEST_F(ConfigInput, DamagedData_IsToldAlsoWhereItIsStillXml)
{
    std::string gzip = compressed(document(""), archive_write_add_filter_gzip);
    gzip[gzip.size() - 6] = static_cast<char>(gzip[gzip.size() - 6] ^ 1);  // of the checksum
    EXPECT_EQ(loaded_as("edge.xml", gzip), (folder / "edge.xml") + ": gzip data is damaged: incorrect data check");
    for (const Packer& packer : packers()) {
        std::string data = compressed(large(), packer.filter);
        data[data.size() / 2] = static_cast<char>(data[data.size() / 2] ^ 0x55);
        EXPECT_THAT(loaded_as("edge.xml", data),
                    AnyOf(HasSubstr(packer.name + " data is damaged"), HasSubstr("not well-formed"),
                          HasSubstr("is not in the data model")))
            << packer.name;
    }
}

TEST_F(ConfigInput, ErrorsBeforeTheDataEnds_AreToldToo)
{
    std::string text = large();
    text.insert(document("").find("</config>"), "<odd/>");
    const std::string whole = compressed(text, archive_write_add_filter_gzip);
    const std::string name = folder / "edge.gz";
    EXPECT_EQ(loaded_as("edge.gz", whole.substr(0, whole.size() / 2)),
              name + ":1: /: element <odd> is not in the data model\n" + name + ": gzip data ends early");
}

TEST_F(ConfigInput, Archive_IsRefusedWithTheNumberOfItsFiles)
{
    const std::string text = document("");
    for (const Setting format :
         {archive_write_set_format_ustar, archive_write_set_format_gnutar, archive_write_set_format_zip}) {
        for (const Setting filter : {archive_write_add_filter_none, archive_write_add_filter_gzip}) {
            EXPECT_EQ(refusal_of_file(packed(format, filter, {text})),
                      ": this is an archive of 1 file; take the configuration out of it and name that file");
            EXPECT_EQ(refusal_of_file(packed(format, filter, {text, text, text})),
                      ": this is an archive of 3 files; take the configuration out of it and name that file");
        }
    }
}

TEST_F(ConfigInput, FileOfAnotherKind_IsToldAsWhatItLooksLike)
{
    const std::string belongs = kBelongs;
    EXPECT_EQ(refusal_of_file(""), ":1: the file is empty" + belongs);
    EXPECT_EQ(refusal_of_file(" \n\t\n"), ":1: the file holds only white space" + belongs);
    EXPECT_EQ(refusal_of_file("\n {\"config\": {}}"), ":1: this begins like JSON" + belongs);
    EXPECT_EQ(refusal_of_file("[1, 2]"), ":1: this begins like JSON" + belongs);
    for (const char* page : {"<!doctype HTML><title>", "<HTML lang=\"en\">", "\xEF\xBB\xBF\n<!DOCTYPE html>",
                             "<?xml version=\"1.0\"?>\n<!DOCTYPE html PUBLIC \"x\">"}) {
        EXPECT_EQ(refusal_of_file(page), ":1: this is an HTML page" + belongs);
    }
    for (const char* text : {"router bgp 65010\n neighbor 192.0.2.1\n", "! 2026\n\x1B[0mhostname caf\xE9", "config>"}) {
        EXPECT_EQ(refusal_of_file(text), ":1: this is plain text, perhaps of a command line, and no XML" + belongs);
    }
    EXPECT_EQ(refusal_of_file("\x7F"
                              "ELF\x02\x01\x01"),
              ":1: this is a binary file" + belongs);
    EXPECT_EQ(refusal_of_file(std::string(10000, '\0')), ":1: this is a binary file" + belongs);
    for (const Packer& packer : packers()) {
        EXPECT_EQ(refusal_of_file(compressed("router bgp 65010", packer.filter)),
                  ":1: this is plain text, perhaps of a command line, and no XML" + belongs);
        if (packer.name != "lz4") {  // which libarchive cannot make of nothing
            EXPECT_EQ(refusal_of_file(compressed("", packer.filter)), ":1: the file is empty" + belongs);
        }
    }
}

TEST_F(ConfigInput, LongWhiteSpaceBeforeTheConfiguration_IsPassedOver)
{
    EXPECT_THAT(loaded_as("edge.xml", std::string(9000, '\n') + document("")), StartsWith("<?xml"));
    EXPECT_THAT(loaded_as("edge.xml", std::string(9000, '\n')), HasSubstr("not well-formed"));
}

TEST_F(ConfigInput, ThingsThatAreNoFiles_AreTold)
{
    EXPECT_EQ(loaded(folder.path()), folder.path() + ": this is a folder; name a file");
    EXPECT_EQ(loaded(folder / "none"), (folder / "none") + ": No such file or directory");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(loaded(folder / "pipe"),
              (folder / "pipe") + ": this is a pipe that nobody writes to; name a file, or - for standard input");
}

TEST_F(ConfigInput, PipeWithAWriter_IsReadToItsEnd)
{
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string text = large();
    std::thread writer([&] { std::ofstream(pipe, std::ios::binary) << text; });
    const std::string result = loaded(pipe);
    writer.join();
    EXPECT_EQ(result, loaded_as("plain.xml", text));
}

// The writer has the pipe open, and its first bytes come later than anybody looks for a writer.
TEST_F(ConfigInput, PipeWhoseWriterTakesItsTime_IsWaitedFor)
{
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int held = open(pipe.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(held, 0);
    std::thread writer([&] {
        usleep(1500000);
        std::ofstream(pipe) << document("");
        close(held);
    });
    EXPECT_THAT(loaded(pipe), StartsWith("<?xml"));
    writer.join();
}

TEST_F(ConfigInput, ProgressOfCompressedData_CountsTheFile)
{
    const std::string data = compressed(large(), archive_write_add_filter_xz);
    const std::string path = folder.file("edge.xz", data);
    Configuration configuration(Schema::builtin());
    std::vector<std::size_t> reported;
    read_config_file(path, &configuration, [&](std::size_t bytes, std::size_t total) {
        EXPECT_EQ(total, data.size());
        reported.push_back(bytes);
    });
    ASSERT_FALSE(reported.empty());
    EXPECT_EQ(reported.back(), data.size());
}

}  // namespace
}  // namespace bgp_test
