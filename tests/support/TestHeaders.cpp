// The headers of the test framework, precompiled for all test programs, belong to this file.
