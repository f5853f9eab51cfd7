// The files beside the generated ones, which are the same for all.
#pragma once

namespace host {

extern char const* const generatorRegistry;
extern char const* const generatorEdrDescription;
extern char const* const generatorSchema;

} // namespace host
