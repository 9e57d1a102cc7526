// SPDX-License-Identifier: MIT
#include "datasync/DataSyncConstants.h"

#include "instance/ObjectKinds.h"

namespace KE::Service {

const char* const PropSep = "_p_";
const char* const ObjectSep = "_o_";
const char* const TraversalSep = "_t_";
const char* const SelectSep = "_s_";
const char* const SkipMarker = "_x_";
const char* const CacheObjectSep = "_co_";
const char* const MethodSep = "_m_";
const char* const PropAll = "all";

const char* const MethodCreateFilter = "CreateFilter";
const char* const MethodDestroyPropertyFilter = "DestroyPropertyFilter";
const char* const MethodWaitForUpdates = "WaitForUpdates";
const char* const MethodCancelWaitForUpdates = "CancelWaitForUpdates";
const char* const MethodRetrieveAllPermissions = "RetrieveAllPermissions";

const char* const SpecTag = "spec";
const char* const PropSetTag = "propSet";
const char* const PathSetTag = "pathSet";
const char* const SelectSetTag = "selectSet";
const char* const TypeTag = "type";
const char* const PathTag = "path";
const char* const SkipTag = "skip";
const char* const PartialUpdatesTag = "partialUpdates";
const char* const TraversalSpecType = "TraversalSpec";
const char* const VersionTag = "version";

const char* const FilterSet = "filterSet";
const char* const FilterTag = "filter";
const char* const ObjectSet = "objectSet";
const char* const Kind = "kind";
const char* const ObjTag = "obj";
const char* const ChangeSet = "changeSet";
const char* const Name = "name";
const char* const ChangeOp = "op";
const char* const Val = "val";
const char* const MissingSet = "missingSet";
const char* const ReturnVal = "returnval";
const char* const ArrayOfPrefix = "ArrayOf";
const char* const VmList = "vm";
const char* const TaskInfoState = "info.state";
const char* const SuccessStr = "success";
const char* const ErrorStr = "error";

const char* const TypeTask = "Task";
const char* const TypeVirtualMachine = KE::Instance::kVirtualMachine;
const char* const TypeHostSystem = KE::Instance::kHostSystem;
const char* const TypeAuthorizationManager = KE::Instance::kAuthorizationManager;
const char* const TypePropertyFilter = "PropertyFilter";
const char* const TypePropertyMethod = "PropertyMethod";

}  // namespace KE::Service
