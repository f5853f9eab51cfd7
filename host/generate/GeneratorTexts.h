// The files that are the same for all seeds.
#pragma once

namespace host {

extern char const* const generatorRegistry;
extern char const* const generatorEdrDescription;
extern char const* const generatorSchema;

} // namespace host
