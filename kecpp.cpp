// SPDX-License-Identifier: MIT
//
// Callable copies, in the shared library, of what the headers define inline and of the templates
// that its interfaces are made of. Programs in which an earlier header's function was not inline,
// that bind by name, or that were compiled without optimisation, find each of them.
//
// Compiled with -fkeep-inline-functions; the version script drops what is not ours.
#include "kecpp.h"

// The sizes that programs for 32-bit x86 were compiled with; offsets and virtual slots are in
// abi/i386/promised-layout.txt. A class that is missing here is made by the library alone.
#if defined(__i386__)
namespace {

template <unsigned int size, typename... Classes>
constexpr bool HaveSize() {
  return ((sizeof(Classes) == size) && ...);
}

static_assert(HaveSize<4, KE::Instance::KECacheLock, KELib::KEString, KELib::Stub::KEStubRef>());
static_assert(
    HaveSize<8, KE::Service::KEMethodImpl, KELib::Http::HeaderInfoImpl,
             KELib::Http::HeaderIteratorImpl, KELib::Http::HttpClientImpl,
             KELib::Http::HttpHandleRef, KELib::KEThreadImpl, KELib::KEWork, KELib::Logging::Logger,
             KELib::Soap::SoapHttpClientImpl, KELib::Xml::XmlTokenState>());
static_assert(
    HaveSize<12, KE::Service::KEDataSyncWorkImpl, KE::Service::KESoapClientImpl,
             KE::Stub::ManagedObjectReference, KELib::Http::HttpResponse,
             KELib::Http::HttpServiceImpl, KELib::Http::HttpSessionImpl, KELib::KEStringBuffer,
             KELib::KEVectorIterator<KELib::KEString>, KELib::Soap::SoapFaultDetail,
             KELib::Soap::SoapRequest, KELib::Soap::SoapResponse, KELib::Throwable>());
static_assert(HaveSize<16, KE::Stub::CIM_ManagedElement, KE::Stub::Zorbel_Collection,
                       KE::Stub::Zorbel_Identity, KELib::KEConfigSourceImpl,
                       KELib::KEHashmapIterator<KELib::KEString, KELib::Stub::KEStubBase*>,
                       KELib::Soap::SoapFaultInfo, KELib::Stub::MRawStub>());
static_assert(HaveSize<20, KE::Instance::KEDataIterator, KE::Stub::CIM_System, KE::Stub::TaskInfo,
                       KELib::Http::HttpRequest, KELib::Http::SSLInfo, KELib::KEFileImpl,
                       KELib::KEVector<KELib::KEString>, KELib::Xml::KEXmlBuffer>());
static_assert(HaveSize<24, KE::Stub::CIM_ComputerSystem, KE::Stub::Zorbel_Privilege,
                       KELib::Xml::KEXmlReader>());
static_assert(
    HaveSize<28, KELib::KEHashmap<KELib::KEString, KELib::Stub::KEStubBase*>, KELib::KEMutex>());
static_assert(HaveSize<32, KELib::KEConfigImpl>());
static_assert(HaveSize<36, KE::Instance::KEDataCache, KE::Service::KEServiceInstManagerImpl,
                       KE::Stub::Zorbel_Role>());
static_assert(HaveSize<40, KE::Instance::KEMultiCacheLock>());
static_assert(HaveSize<44, KE::Service::KESessionImpl>());
static_assert(HaveSize<48, KE::Service::KEServiceInstImpl, KELib::DateTime>());
static_assert(HaveSize<52, KE::Stub::ZORBEL_ORXComputerSystem, KELib::KEConditionImpl>());
static_assert(HaveSize<56, KELib::Http::ConnectionInfo>());
static_assert(HaveSize<60, KE::Service::UpdateInfo>());
static_assert(HaveSize<64, KE::Stub::ZORBEL_VMComputerSystem>());
static_assert(HaveSize<16, KELib::Soap::SoapException>());
static_assert(HaveSize<12, KELib::Exception, KE::InvalidStateException>());

}  // namespace
#endif

namespace KELib {

// NOLINTBEGIN(bugprone-macro-parentheses): types
#define KECPP_ELEMENT(Type)                 \
  template KECPP_API bool DeleteVal(Type&); \
  template KECPP_API bool DeleteVal(Type*);
// NOLINTEND(bugprone-macro-parentheses)

KECPP_ELEMENT(char)
KECPP_ELEMENT(unsigned char)
KECPP_ELEMENT(short)
KECPP_ELEMENT(unsigned short)
KECPP_ELEMENT(int)
KECPP_ELEMENT(unsigned int)
KECPP_ELEMENT(long long)
KECPP_ELEMENT(unsigned long long)
KECPP_ELEMENT(float)
KECPP_ELEMENT(double)
KECPP_ELEMENT(bool)
#undef KECPP_ELEMENT

template KECPP_API bool DeleteVal(Stub::KEStubBase*);
template KECPP_API bool DeleteVal(Stub::KEAssocStubBase*);
template KECPP_API bool DeleteVal(KE::Stub::ManagedObjectReference*);
template KECPP_API bool DeleteVal(KE::Instance::KEDataCache*);
template KECPP_API bool DeleteVal(KE::Service::KEServiceInst*);
template KECPP_API bool DeleteVal(KE::Service::KESession*);
template KECPP_API bool DeleteVal(KE::Service::DataSyncInfo*);
template KECPP_API bool DeleteVal(KE::Service::MethodDataSyncInfo*);

template class KEVector<KEString>;
template class KEVector<Stub::KEAssocStubBase*>;
template class KEVector<KE::Instance::KECacheLock*>;
template class KEVector<KE::Service::KESession*>;
template class KEVectorIterator<KEString>;
template class KEVectorIterator<Stub::KEAssocStubBase*>;
template class KEVectorIterator<KE::Instance::KECacheLock*>;
template class KEVectorIterator<KE::Service::KESession*>;

#define KECPP_MAP(Key, Value)           \
  template class KEHashmap<Key, Value>; \
  template class KEHashmapIterator<Key, Value>;

KECPP_MAP(KEString, bool)
KECPP_MAP(KEString, Stub::KEStubBase*)
KECPP_MAP(KEString, KE::Instance::KEDataCache*)
KECPP_MAP(KEString, KE::Service::KEServiceInst*)
KECPP_MAP(KE::Stub::ManagedObjectReference*, KE::Service::DataSyncInfo*)
KECPP_MAP(KE::Stub::ManagedObjectReference*, KE::Service::MethodDataSyncInfo*)
#undef KECPP_MAP

}  // namespace KELib
