#include "Foundation/Memory/Tallocator.h"

Tallocator::~Tallocator() = default;
