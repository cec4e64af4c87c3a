/*
 * Copyright (C) 2026 The Tether Offload Project
 *
 * Licensed under the Apache License, Version 2.0 (the "License");
 * you may not use this file except in compliance with the License.
 * You may obtain a copy of the License at
 *
 *      http://www.apache.org/licenses/LICENSE-2.0
 *
 * Unless required by applicable law or agreed to in writing, software
 * distributed under the License is distributed on an "AS IS" BASIS,
 * WITHOUT WARRANTIES OR CONDITIONS OF ANY KIND, either express or implied.
 * See the License for the specific language governing permissions and
 * limitations under the License.
 */

// Bridge membership of the USB tethering interface and the modem's LAN interface, built and torn
// down through command lines sent to the network agent.

#pragma once

extern const char gBridgeName[];     // "mdbr0"
extern const char gUsbIface[];       // "rndis0"
extern const char gModemLanIface[];  // "wanif-lan"

// 0 when the command reached the agent, -1 otherwise.
int addSlave(char* iface);
int delSlave(char* iface);
int clearMac();

// Both always return 0; each step logs its own failure and the sequence goes on.
int activeVexaonBridge();
int deactiveVexaonBridge();
