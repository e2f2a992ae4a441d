#include "MappingClass.h"

#include <cstdio>

MappingClass::MappingClass()
{
    std::remove("interpoLog.txt");
}

MappingClass::~MappingClass()
{
    releaseString(itsErrorMessage);
}
