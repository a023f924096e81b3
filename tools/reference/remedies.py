"""What to do about a failure, by its name: the first expression that matches the whole name tells."""

REMEDIES = {
    r"Error":
        "Catch it to catch every failure of the library that is no warning by its class. `code` and `msg` tell "
        "which one it is.",
    r"ZVRWarning":
        "Catch it beside `Error`: it is the base of failures that are warnings by class, such as those of the "
        "motion arguments, which are raised all the same.",
    r"USBConnectionError":
        "See that the device is plugged in and no other program has it, that `libusb-1.0` is installed, and that "
        "your user may open it. `DeviceFinder` lists what is there. Behind a loss, call `reconnect`.",
    r"NetworkConnectionError":
        "See that the address is that of the device (`DeviceFinder` asks all on the network), that the host "
        "reaches it (`ping`), and that the port is right. After `close`, make a new object.",
    r"NetworkConnectionLostError":
        "Call `reconnect`, or let `zvrkit.reconnecting` do it. Ports that were open are to be opened again only "
        "if the device has restarted. Before the first `connect`, connect.",
    r"ReceivePacketTimeoutError":
        "Ask again if the request may be repeated, give a longer `timeout`, and look whether other requests are "
        "answered: if none is, the device or the network is gone. Some operations have no reply at all; their "
        "entries say so.",
    r"UARTConnectionError":
        "See that the port is there and no other program has it open, that your user may open it, and that the "
        "speed is one it has.",
    r"USBError":
        "Plug the device in again and call `reconnect`. If opening it fails, your user may lack the right to: a "
        "udev rule gives it.",
    r"USBTimeoutError":
        "The library repeats what timed out; in code of your own, try again.",
    r"APINotSupportError":
        "The model has no such function. Its page tells what it has; take another operation or model.",
    r"PinsNotExistError":
        "Name pins that the port has. The model's page shows them, and the module's `..._getPinMap` or pin "
        "dictionary has them.",
    r"PinsValueNotDefineError":
        "Give as many values as pins.",
    r"InputTypeNotConsistentError":
        "Give pins and values of the same kind: both as lists, or both as numbers.",
    r"InputTypeNotCorrectError":
        "Give the argument the type in the operation's signature. An integer has to be an `int`, not a float with"
        " a whole value or a text.",
    r"InputDataNotInRangeError":
        "Keep to the range that the operation's entry names for the argument.",
    r"IniFileExtensionNameError":
        'Let the name of the settings file end in ".ini".',
    r"IniFileNotFoundError":
        "Give the path of a file that is there; relative paths count from the working directory.",
    r"RelayCounterIndexError":
        "Name a counter that the model has: 0 to 5.",
    r"(PWM|Counter)ChannelNotAvaliableError":
        "Use channel 0 or 1. The checks of PWM and counters raise each other's class, so catch both.",
    r"EncoderChannelNotAvaliableError":
        "Use encoder 0, the only one.",
    r"LatticePortNotAvaliableError":
        "Give the slot as it is printed on the chassis: 1, 2 or 4.",
    r"(\w+)PortNotAvaliable(Error)?":
        "Use a port of the model; its page shows which there are. Where the entry says that a line is in another "
        "mode, close what uses the line first, or set it idle.",
    r"(\w+)ChannelNotAvaliableError":
        "Use a channel of the model; its page shows how many there are.",
    r"(AICS|ThermalChipSelect)NotAvaliableError":
        "Use a chip select or sensor of the port; the model's page shows how many there are.",
    r"(AI|AO)RateNotVaildError":
        "Ask for a lower rate, or enable fewer channels: the highest rate of most models falls with their number."
        " The model's page has the rates.",
    r"AOSpanNotVaildError":
        "Use a span of 0 to 4; what they are in volts is the firmware's, and the entry has those of simulated devices.",
    r"(AI|AITrigger|AHRS)ModeNotAvaliableError|AOFormNotAvaliableError|AOModeNotVaildError":
        "Use a mode or form of the range in the operation's entry.",
    r"Thermal(Mode|Type)NotVaildError":
        "Use a type or filter that the operation's entry lists for this kind of sensor.",
    r"I2C(ClockNotSupport|AddressSizeNotVaild)Error":
        "Use a number that the operation's entry lists.",
    r"SPIDataLengthExceedMaxError|UARTExceedMaxLengthError|CANDataLengthNotVaildError":
        "Send less at once: split the data over several calls.",
    r"SPI(DataSize|FirstBit|Prescaler|Mode)NotVaildError":
        "Use a number that the operation's entry lists.",
    r"UARTBaudRateNotSupportError":
        "Use a speed up to 400000 bits per second, the same as the other side's.",
    r"UART(StopBit|Parity|DataBit)NotSupportError":
        "Use a number that the operation's entry lists, the same setting as the other side's.",
    r"CANSpeedNotVaildError":
        "Use 0, 1, 2 or 3, the speed of the whole bus.",
    r"CANTX(Priority)?NotVaildError":
        "Use a number that the operation's entry lists.",
    r"Motion(\w+)Error":
        "Use an axis, mode or level that the operation's entry lists. It is a warning by class: `except Error` "
        "does not catch it, `except ZVRWarning` does.",
    r"FlightModeNotAvaliableError":
        "Use a flight mode that the operation's entry lists.",
    r"HeightNotAvaliableError":
        "Keep the height between the object's `z_min_position_NED` and `z_max_position_NED`; down is positive.",
    r"AngleNotAvaliableError":
        "Keep the angle between the object's `roll_min_angle` and `roll_max_angle`.",
    r"FirmwareEnableError":
        "The device has this switched off, or cannot do it in its present state: open or start it first, or wait "
        "until it is ready.",
    r"FirmwarePinIndexError":
        "Name a pin or port that this device has, and see that nothing else uses it.",
    r"Firmware(RTC|I2C|SPI|UART|TIM|PWM|Pulse|Encoder|EEPROM|OLED|DIO|Relay|AI|AO|Motion|Drive|Thermal|CAN)Error":
        "The device refuses for this part of it: see that the port is open, that the value is in range, and that "
        "the part is not busy. The operation gives this code as a negative number and raises nothing by itself.",
    r"Firmware(USB|TCP|UDP)Error":
        "The device had trouble with the link itself. Ask again; if it stays, reconnect.",
    r"FirmwareParserError":
        "The device did not understand the request: see whether its firmware knows the operation "
        "(`Sys_getDriverInfo`), and whether the link loses bytes.",
    r"Firmware(HALIndex|ZVRIndex|Core|Bootloader|Other)Error":
        "The firmware failed inside. Ask again; if it stays, restart the device with `Sys_reboot`.",
    r"ExtLibNotFoundWarning":
        "Nothing, as long as devices on USB are found: it tells that no `libusb-1.0` lies beside the package, and the "
        "system's is used then. If there is none either, install it.",
    r"(AI|UART|CAN|AHRS)QueueOverflowWarning":
        "Read more often, or more at once, or lower the rate: rows that came meanwhile were dropped and are "
        "counted.",
}  # fmt: skip
