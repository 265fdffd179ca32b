// SPDX-License-Identifier: Apache-2.0
// Uses a type that nobody declares.
#pragma once

Undeclared getName();
