// The code that the BGP daemon shares, called from a transaction: its handles, the trace lines that it writes, and what
// it says when it ends the process.
#pragma once

#include <gmock/gmock.h>

#include <cstddef>
#include <string>
#include <vector>

#include "bgp_update/bgp_utils.h"
#include "confd_maapi.h"
#include "support/update_fixture.h"

namespace bgp_test {

// For death tests on what show_faults() prints: a fault of an operation, after one call stack, with a text about
// ConfD's last error; and a failed assertion in an operation's name.
testing::Matcher<const std::string&> reports_error(int code, const std::string& function, const std::string& error);
testing::Matcher<const std::string&> asserts(const std::string& signature, const std::string& expression);

// A name as the operations take it.
class Name {
public:
    Name(const char* text) : text_(text) {}
    operator char*() { return text_.data(); }

private:
    std::string text_;
};

class DaemonTest : public UpdateTest {
protected:
    int maapi() { return open().maapi_socket; }
    int thandle() { return open().thandle; }
    int cdb() { return open().cdb_socket; }
    confd_trans_ctx* context();

    // The trace lines since the last call of either, each as "CreateRouteMapIdx 11 Set next-index to 1".
    std::vector<std::string> traced();
    void expectTrace(const std::vector<std::string>& lines) { EXPECT_EQ(listing(traced()), listing(lines)); }

private:
    std::size_t seen_ = 0;
};

}  // namespace bgp_test
