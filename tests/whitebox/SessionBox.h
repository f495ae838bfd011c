#pragma once

struct SessionBox {};

const SessionBox* GetSessionBox();
