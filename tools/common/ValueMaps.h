// SPDX-License-Identifier: MIT
//
// What the values of enumerations mean, as CIM Schema 2.49 says it. Each list ends with a row
// without a name.
#ifndef KECPP_TOOLS_COMMON_VALUEMAPS_H
#define KECPP_TOOLS_COMMON_VALUEMAPS_H

#include "tools/common/Schema.h"

namespace tools {

inline constexpr NamedValue OPERATIONAL_STATUS[] = {{"0", "Unknown"},
                                                    {"1", "Other"},
                                                    {"2", "OK"},
                                                    {"3", "Degraded"},
                                                    {"4", "Stressed"},
                                                    {"5", "Predictive Failure"},
                                                    {"6", "Error"},
                                                    {"7", "Non-Recoverable Error"},
                                                    {"8", "Starting"},
                                                    {"9", "Stopping"},
                                                    {"10", "Stopped"},
                                                    {"11", "In Service"},
                                                    {"12", "No Contact"},
                                                    {"13", "Lost Communication"},
                                                    {"14", "Aborted"},
                                                    {"15", "Dormant"},
                                                    {"16", "Supporting Entity in Error"},
                                                    {"17", "Completed"},
                                                    {"18", "Power Mode"},
                                                    {"19", "Relocating"},
                                                    {"..", "DMTF Reserved"},
                                                    {"0x8000..", "Vendor Reserved"},
                                                    {nullptr, nullptr}};

inline constexpr NamedValue HEALTH_STATE[] = {{"0", "Unknown"},
                                              {"5", "OK"},
                                              {"10", "Degraded/Warning"},
                                              {"15", "Minor failure"},
                                              {"20", "Major failure"},
                                              {"25", "Critical failure"},
                                              {"30", "Non-recoverable error"},
                                              {"..", "DMTF Reserved"},
                                              {"32768..65535", "Vendor Specific"},
                                              {nullptr, nullptr}};

inline constexpr NamedValue ENABLED_STATE[] = {{"0", "Unknown"},
                                               {"1", "Other"},
                                               {"2", "Enabled"},
                                               {"3", "Disabled"},
                                               {"4", "Shutting Down"},
                                               {"5", "Not Applicable"},
                                               {"6", "Enabled but Offline"},
                                               {"7", "In Test"},
                                               {"8", "Deferred"},
                                               {"9", "Quiesce"},
                                               {"10", "Starting"},
                                               {"11..32767", "DMTF Reserved"},
                                               {"32768..65535", "Vendor Reserved"},
                                               {nullptr, nullptr}};

inline constexpr NamedValue ENABLED_DEFAULT[] = {
    {"2", "Enabled"},        {"3", "Disabled"},
    {"5", "Not Applicable"}, {"6", "Enabled but Offline"},
    {"7", "No Default"},     {"9", "Quiesce"},
    {"..", "DMTF Reserved"}, {"32768..65535", "Vendor Reserved"},
    {nullptr, nullptr}};

inline constexpr NamedValue REQUESTED_STATE[] = {
    {"0", "Unknown"},        {"2", "Enabled"},
    {"3", "Disabled"},       {"4", "Shut Down"},
    {"5", "No Change"},      {"6", "Offline"},
    {"7", "Test"},           {"8", "Deferred"},
    {"9", "Quiesce"},        {"10", "Reboot"},
    {"11", "Reset"},         {"12", "Not Applicable"},
    {"..", "DMTF Reserved"}, {"32768..65535", "Vendor Reserved"},
    {nullptr, nullptr}};

inline constexpr NamedValue AVAILABLE_STATES[] = {
    {"2", "Enabled"}, {"3", "Disabled"},       {"4", "Shut Down"}, {"6", "Offline"},
    {"7", "Test"},    {"8", "Defer"},          {"9", "Quiesce"},   {"10", "Reboot"},
    {"11", "Reset"},  {"..", "DMTF Reserved"}, {nullptr, nullptr}};

inline constexpr NamedValue TRANSITION[] = {
    {"0", "Unknown"},        {"2", "Enabled"},  {"3", "Disabled"}, {"4", "Shut Down"},
    {"5", "No Change"},      {"6", "Offline"},  {"7", "Test"},     {"8", "Defer"},
    {"9", "Quiesce"},        {"10", "Reboot"},  {"11", "Reset"},   {"12", "Not Applicable"},
    {"..", "DMTF Reserved"}, {nullptr, nullptr}};

inline constexpr NamedValue DEDICATED[] = {{"0", "Not Dedicated"},
                                           {"1", "Unknown"},
                                           {"2", "Other"},
                                           {"3", "Storage"},
                                           {"4", "Router"},
                                           {"5", "Switch"},
                                           {"6", "Layer 3 Switch"},
                                           {"7", "Central Office Switch"},
                                           {"8", "Hub"},
                                           {"9", "Access Server"},
                                           {"10", "Firewall"},
                                           {"11", "Print"},
                                           {"12", "I/O"},
                                           {"13", "Web Caching"},
                                           {"14", "Management"},
                                           {"15", "Block Server"},
                                           {"16", "File Server"},
                                           {"17", "Mobile User Device"},
                                           {"18", "Repeater"},
                                           {"19", "Bridge/Extender"},
                                           {"20", "Gateway"},
                                           {"21", "Storage Virtualizer"},
                                           {"22", "Media Library"},
                                           {"23", "ExtenderNode"},
                                           {"24", "NAS Head"},
                                           {"25", "Self-contained NAS"},
                                           {"26", "UPS"},
                                           {"27", "IP Phone"},
                                           {"28", "Management Controller"},
                                           {"29", "Chassis Manager"},
                                           {"30", "Host-based RAID controller"},
                                           {"31", "Storage Device Enclosure"},
                                           {"32", "Desktop"},
                                           {"33", "Laptop"},
                                           {"34", "Virtual Tape Library"},
                                           {"35", "Virtual Library System"},
                                           {"36", "Network PC/Thin Client"},
                                           {"37", "FC Switch"},
                                           {"38", "Ethernet Switch"},
                                           {"..", "DMTF Reserved"},
                                           {"32568..65535", "Vendor Reserved"},
                                           {nullptr, nullptr}};

inline constexpr NamedValue COMMUNICATION_MECHANISM[] = {
    {"0", "Unknown"}, {"1", "Other"}, {"2", "CIM-XML"}, {nullptr, nullptr}};

inline constexpr NamedValue FUNCTIONAL_PROFILES[] = {{"0", "Unknown"},
                                                     {"1", "Other"},
                                                     {"2", "Basic Read"},
                                                     {"3", "Basic Write"},
                                                     {"4", "Schema Manipulation"},
                                                     {"5", "Instance Manipulation"},
                                                     {"6", "Association Traversal"},
                                                     {"7", "Query Execution"},
                                                     {"8", "Qualifier Declaration"},
                                                     {"9", "Indications"},
                                                     {"10", "Pulled Read"},
                                                     {"11", "Pulled Read Count"},
                                                     {"12", "Pulled Query Execution"},
                                                     {nullptr, nullptr}};

inline constexpr NamedValue AUTHENTICATION[] = {{"0", "Unknown"}, {"1", "Other"},
                                                {"2", "None"},    {"3", "Basic"},
                                                {"4", "Digest"},  {nullptr, nullptr}};

inline constexpr NamedValue ADVERTISE_TYPES[] = {
    {"1", "Other"}, {"2", "Not Advertised"}, {"3", "SLP"}, {nullptr, nullptr}};

inline constexpr NamedValue SPECIFICATION_TYPE[] = {{"1", "Other"},
                                                    {"2", "Profile"},
                                                    {"3", "Message Registry"},
                                                    {"..", "DMTF Reserved"},
                                                    {nullptr, nullptr}};

inline constexpr NamedValue ORGANIZATION[] = {{"1", "Other"},
                                              {"2", "DMTF"},
                                              {"3", "CompTIA"},
                                              {"4", "Consortium for Service Innovation"},
                                              {"5", "FAST"},
                                              {"6", "GGF"},
                                              {"7", "INTAP"},
                                              {"8", "itSMF"},
                                              {"9", "NAC"},
                                              {"10", "Northwest Energy Efficiency Alliance"},
                                              {"11", "SNIA"},
                                              {"12", "TM Forum"},
                                              {"13", "The Open Group"},
                                              {"14", "ANSI"},
                                              {"15", "IEEE"},
                                              {"16", "IETF"},
                                              {"17", "INCITS"},
                                              {"18", "ISO"},
                                              {"19", "W3C"},
                                              {"20", "OGF"},
                                              {"21", "The Green Grid"},
                                              {"..", "DMTF Reserved"},
                                              {nullptr, nullptr}};

inline constexpr NamedValue PERSISTENCE_TYPE[] = {
    {"1", "Other"}, {"2", "Permanent"}, {"3", "Transient"}, {nullptr, nullptr}};

inline constexpr NamedValue LISTENER_PROTOCOL[] = {
    {"1", "Other"}, {"2", "CIM-XML"}, {nullptr, nullptr}};

inline constexpr NamedValue FATAL_ERROR_POLICY[] = {
    {"1", "Other"}, {"2", "Ignore"}, {"3", "Disable"}, {"4", "Remove"}, {nullptr, nullptr}};

inline constexpr NamedValue SUBSCRIPTION_STATE[] = {{"0", "Unknown"},  {"1", "Other"},
                                                    {"2", "Enabled"},  {"3", "Enabled Degraded"},
                                                    {"4", "Disabled"}, {nullptr, nullptr}};

inline constexpr NamedValue REPEAT_POLICY[] = {{"0", "Unknown"}, {"1", "Other"},
                                               {"2", "None"},    {"3", "Suppress"},
                                               {"4", "Delay"},   {nullptr, nullptr}};

inline constexpr NamedValue REMOVAL_ACTION[] = {
    {"2", "Remove"}, {"3", "Disable"}, {"4", "Ignore"}, {nullptr, nullptr}};

inline constexpr NamedValue SEVERITY[] = {
    {"0", "Unknown"},  {"1", "Other"}, {"2", "Information"}, {"3", "Degraded/Warning"},
    {"4", "Minor"},    {"5", "Major"}, {"6", "Critical"},    {"7", "Fatal/NonRecoverable"},
    {nullptr, nullptr}};

}  // namespace tools

#endif
