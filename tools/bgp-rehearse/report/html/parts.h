// The parts of a page, in the order in which they stand in it.
#pragma once

#include <cstddef>
#include <string>

#include "report/html/markup.h"
#include "report/html/row_numbers.h"
#include "report/model.h"

namespace bgp_rehearse {

void write_findings(const Report& report, const RowNumbers& numbers, Markup* page);
void write_account(const Report& report, Markup* page);
void write_steps(const Report& report, Markup* page);
void write_changes(const Report& report, const RowNumbers& numbers, Markup* page);
void write_log(const Report& report, Markup* page);

// "#step-3": where a step is told of, by its name; empty where the page has no such step.
std::string link_to_step(const Report& report, const std::string& name);

// "#log-12", for a line of the log from 1.
std::string link_to_line(std::size_t line);

}  // namespace bgp_rehearse
