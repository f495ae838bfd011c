#pragma once

struct CoreBox {};

const CoreBox* GetCoreBox();
