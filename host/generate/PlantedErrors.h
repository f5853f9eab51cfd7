// Events with one error each, for programs that look for errors in dumps: every kind has as many
// events as are asked for. Each event has a customer, reference data and catalogue entries of its
// own, so that nothing but the planted error is wrong with it and nothing else is touched by it.
#pragma once

#include "generate/GeneratedFile.h"

#include <cstdint>

namespace host {

// How many events there are; some kinds take two EDRs for one.
std::uint64_t plantedEvents(std::uint32_t ofEachKind);

// The rows of the planted events, as statements of SQL; returns how many. The EDRs, one a line. And
// the list of what is to be found: kind, customer identifier and service code in each line, between
// tabs. All throw a BAS::Status when the file can't be written.
std::uint64_t writePlantedRows(std::uint32_t ofEachKind, GeneratedFile& file);
void writePlantedEdrs(std::uint32_t ofEachKind, GeneratedFile& file);
void writePlantedList(std::uint32_t ofEachKind, GeneratedFile& file);

} // namespace host
