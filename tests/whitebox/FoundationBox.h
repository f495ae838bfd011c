#pragma once

struct FoundationBox {};

const FoundationBox* GetFoundationBox();
