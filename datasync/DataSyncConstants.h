// SPDX-License-Identifier: MIT
//
// The words of property lists, of the property collector's requests and of its update sets.
#ifndef KECPP_DATASYNC_DATASYNCCONSTANTS_H
#define KECPP_DATASYNC_DATASYNCCONSTANTS_H

#include "foundation/KEExport.h"

namespace KE::Service {

// Separators of a property list: whole list elements (see docs/watching.md).
extern KECPP_API const char* const PropSep;         // "_p_"
extern KECPP_API const char* const ObjectSep;       // "_o_"
extern KECPP_API const char* const TraversalSep;    // "_t_"
extern KECPP_API const char* const SelectSep;       // "_s_"
extern KECPP_API const char* const SkipMarker;      // "_x_"
extern KECPP_API const char* const CacheObjectSep;  // "_co_"
extern KECPP_API const char* const MethodSep;       // "_m_"
extern KECPP_API const char* const PropAll;         // "all", an element's name

// Server methods.
extern KECPP_API const char* const MethodCreateFilter;
extern KECPP_API const char* const MethodDestroyPropertyFilter;
extern KECPP_API const char* const MethodWaitForUpdates;
extern KECPP_API const char* const MethodCancelWaitForUpdates;
extern KECPP_API const char* const MethodRetrieveAllPermissions;

// Elements of a filter request.
extern KECPP_API const char* const SpecTag;
extern KECPP_API const char* const PropSetTag;
extern KECPP_API const char* const PathSetTag;
extern KECPP_API const char* const SelectSetTag;
extern KECPP_API const char* const TypeTag;
extern KECPP_API const char* const PathTag;
extern KECPP_API const char* const SkipTag;
extern KECPP_API const char* const PartialUpdatesTag;
extern KECPP_API const char* const TraversalSpecType;
extern KECPP_API const char* const VersionTag;

// Elements and values of an update set.
extern KECPP_API const char* const FilterSet;
extern KECPP_API const char* const FilterTag;
extern KECPP_API const char* const ObjectSet;
extern KECPP_API const char* const Kind;
extern KECPP_API const char* const ObjTag;
extern KECPP_API const char* const ChangeSet;
extern KECPP_API const char* const Name;
extern KECPP_API const char* const ChangeOp;
extern KECPP_API const char* const Val;
extern KECPP_API const char* const MissingSet;
extern KECPP_API const char* const ReturnVal;
extern KECPP_API const char* const ArrayOfPrefix;
extern KECPP_API const char* const VmList;
extern KECPP_API const char* const TaskInfoState;
extern KECPP_API const char* const SuccessStr;
extern KECPP_API const char* const ErrorStr;

// Types of server objects and of the references that SetupDataSync returns.
extern KECPP_API const char* const TypeTask;
extern KECPP_API const char* const TypeVirtualMachine;
extern KECPP_API const char* const TypeHostSystem;
extern KECPP_API const char* const TypeAuthorizationManager;
extern KECPP_API const char* const TypePropertyFilter;
extern KECPP_API const char* const TypePropertyMethod;

}  // namespace KE::Service

#endif
