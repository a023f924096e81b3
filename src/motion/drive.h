// Shared by the files of the stepper drive.
#pragma once

#include "motion/records.h"

namespace zvr::python {

constexpr int lines = 7;  // the three inputs of a port: limits and home

inline const Parameter drivePort{"port", "int", "port of the drive, 0"};
inline const Definition checkDrivePort{.name = "_checkTMC5240Port",
                                       .parameters = {drivePort},
                                       .doc = "Raises PAWLPortNotAvaliable unless the model has the port.",
                                       .raises = {"InputTypeNotCorrectError: an argument has the wrong type",
                                                  "PAWLPortNotAvaliable: the model has no such port"},
                                       .body = [](py::handle self, const Object& port) {
                                           checkIsInt(port, "port");
                                           if (!attribute(self, "pawl_dict").contains(port)) {
                                               throw Failure(FailureId::PAWLPortNotAvaliable);
                                           }
                                       }};

void defineDriveMoves(Feature& drive);

}  // namespace zvr::python
