// SPDX-License-Identifier: MIT
//
// libkecpp, everything. An agent needs little of it:
//
//   GetServiceManagerInstance()            service/entry/KEServiceInstManager.h
//   -> GetServiceInstance(config, default) service/entry/KEServiceInst.h
//   -> GetSession() -> GetDataSync()       service/entry/KESession.h, datasync/KEDataSync.h
//   -> SetupDataSync(root, list, waiter)   fills the caches and keeps them true
//   -> GetCache()                          instance/KETypeCache.h, instance/KEDataIterator.h
#ifndef KECPP_KECPP_H
#define KECPP_KECPP_H

#include "foundation/DateTime.h"
#include "foundation/ElementPolicies.h"
#include "foundation/KECondition.h"
#include "foundation/KEConstants.h"
#include "foundation/KEException.h"
#include "foundation/KEFile.h"
#include "foundation/KEHashmap.h"
#include "foundation/KEMutex.h"
#include "foundation/KEMutexGuard.h"
#include "foundation/KEString.h"
#include "foundation/KEStringBuffer.h"
#include "foundation/KEThread.h"
#include "foundation/KETime.h"
#include "foundation/KEVector.h"
#include "foundation/KEVersion.h"
#include "foundation/KEWaiter.h"
#include "foundation/KEWork.h"
#include "foundation/Logger.h"
#include "foundation/StringUtil.h"

#include "xml/KEXmlBuffer.h"
#include "xml/KEXmlReader.h"
#include "xml/XmlConstants.h"
#include "xml/XmlEscape.h"
#include "xml/XmlException.h"
#include "xml/XmlTokenState.h"

#include "config/DefaultConfig.h"
#include "config/KEConfig.h"
#include "config/KEConfigImpl.h"
#include "config/KEConfigSource.h"
#include "config/KEConfigSourceImpl.h"

#include "http/ConnectionInfo.h"
#include "http/HeaderInfo.h"
#include "http/HeaderInfoImpl.h"
#include "http/HttpClient.h"
#include "http/HttpConnectionPool.h"
#include "http/HttpConstants.h"
#include "http/HttpException.h"
#include "http/HttpHandle.h"
#include "http/HttpRequest.h"
#include "http/HttpResponse.h"
#include "http/HttpService.h"
#include "http/HttpSession.h"
#include "http/SSLInfo.h"
#include "http/Url.h"

#include "soap/SoapClient.h"
#include "soap/SoapConstants.h"
#include "soap/SoapException.h"
#include "soap/SoapFaultInfo.h"
#include "soap/SoapHttpClientImpl.h"
#include "soap/SoapMessage.h"
#include "soap/SoapRequest.h"
#include "soap/SoapResponse.h"

#include "stub/base/KEAssocStubBase.h"
#include "stub/base/KEStubBase.h"
#include "stub/base/KEStubRef.h"
#include "stub/base/MRawStub.h"
#include "stub/classes/CIM_ComputerSystem.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/ManagedObjectReference.h"
#include "stub/classes/TaskInfo.h"
#include "stub/classes/ZORBEL_HostedDependency.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"
#include "stub/classes/Zorbel_Identity.h"
#include "stub/classes/Zorbel_MemberOfCollection.h"
#include "stub/classes/Zorbel_Privilege.h"
#include "stub/classes/Zorbel_Role.h"

#include "instance/CacheConversion.h"
#include "instance/KECache.h"
#include "instance/KEChangeFeed.h"
#include "instance/KEDataCache.h"
#include "instance/KEDataIterator.h"
#include "instance/KEMultiCacheLock.h"
#include "instance/KETypeCache.h"

#include "service/call/KEMethod.h"
#include "service/call/KEMethodImpl.h"
#include "service/call/KESoapClient.h"
#include "service/call/KESoapClientImpl.h"
#include "service/call/MgmtdWatch.h"
#include "service/call/ServiceConstants.h"

#include "datasync/DataSyncConstants.h"
#include "datasync/DataSyncInfo.h"
#include "datasync/FilterSpec.h"
#include "datasync/KEDataSync.h"
#include "datasync/KEDataSyncImpl.h"
#include "datasync/KEDataSyncWorkImpl.h"
#include "datasync/MethodDataSyncInfo.h"
#include "datasync/UpdateInfo.h"

#include "service/entry/KEConnectFailure.h"
#include "service/entry/KEServiceInst.h"
#include "service/entry/KEServiceInstImpl.h"
#include "service/entry/KEServiceInstManager.h"
#include "service/entry/KEServiceInstManagerImpl.h"
#include "service/entry/KESession.h"
#include "service/entry/KESessionImpl.h"
#include "service/entry/LoginConstants.h"

#endif
