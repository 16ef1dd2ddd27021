// Stands in for the platform's libbinder.so: the rig's binder is declared by the same
// headers. A Parcel has the size that arm/contract/layout.cpp asserts; a strong pointer
// is returned through memory.
#include "tests/arm/platform/forward.h"

FORWARD(_ZN7android21defaultServiceManagerEv)
FORWARD(_ZN7android6Parcel11writeUint32Ej)
FORWARD(_ZN7android6Parcel19writeInterfaceTokenERKNS_8String16E)
FORWARD(_ZN7android6ParcelC1Ev)
FORWARD(_ZN7android6ParcelD1Ev)
FORWARD(_ZNK7android6Parcel17readExceptionCodeEv)
FORWARD(_ZNK7android6Parcel9readInt32Ev)
