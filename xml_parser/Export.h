#pragma once

/// @file
/// Marks what the library tessarin_xml_parser shows to others.

#if defined(_WIN32)
#    if defined(TESSARIN_XML_PARSER_BUILDS)
#        define TESSARIN_XML_PARSER_EXPORT __declspec(dllexport)
#    else
#        define TESSARIN_XML_PARSER_EXPORT __declspec(dllimport)
#    endif
#else
#    define TESSARIN_XML_PARSER_EXPORT __attribute__((visibility("default")))
#endif
