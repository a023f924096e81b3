# Written by `make stubs`; do not edit.
import asyncio
import socket
from collections.abc import Callable, Iterable, Iterator, Mapping, MutableMapping, MutableSet, Sequence
from decimal import Decimal
from typing import Any

from typing_extensions import Self

OPEN_CAN: int
START_CAN: int
WRITE_CAN: int
STOP_CAN: int
CLOSE_CAN: int
SET_CAN_SPEED: int
SET_CAN_ENABLED_ITR: int
SET_CAN_TX_PRIORITY: int
SET_CAN_RX_ROLLOVER: int
SET_CAN_RX_FILTERING_ON: int
SET_CAN_RX_FILTER_OR_MASK: int
GET_CAN_INTERRUPTS: int
GET_CAN_ERRORS: int
GET_CAN_COUNTERS: int
OPEN_THERMAL: int
READ_THERMAL_JUNCTION: int
READ_THERMAL_COUPLE: int
CLOSE_THERMAL: int
SET_THERMAL_NOISE_FILTER: int
SET_THERMAL_OVER_SAMPLING: int
SET_THERMAL_TYPE: int
GET_THERMAL_STATUS: int
SET_THERMAL_JUNCTION_ON: int
READ_THERMAL_OFFSET: int
WRITE_THERMAL_OFFSET: int
WRITE_THERMAL_JUNCTION: int
LOAD_THERMAL_OFFSET: int
SAVE_THERMAL_OFFSET: int
OPEN_PWM: int
START_PWM: int
STOP_PWM: int
CLOSE_PWM: int
SET_PWM_FREQUENCY: int
SET_PWM_DUTY_CYCLE: int
READ_ACCELERATION: int
SET_AP: int
GET_RSSI: int
GET_BATTERY: int
GET_THERMOMETER: int
SET_WIFI_CONFIGURATION: int
GET_WIFI_CONFIGURATION: int
SET_WIFI_BANDWIDTH: int
GET_WIFI_BANDWIDTH: int
RESET_FACTORY: int
GET_SERIAL_NUMBER: int
SET_SERIAL_NUMBER: int
GET_GATEWAY: int
SET_GATEWAY: int
GET_THREADS: int
GET_PIN_MODE_OF_SLOT: int
SET_LAMP: int
GET_MEASUREMENT: int
OPEN_UART: int
START_UART_READING: int
WRITE_UART: int
STOP_UART_READING: int
CLOSE_UART: int
RESET_UART: int
SET_UART_BAUD_RATE: int
SET_UART_DATA_SIZE: int
SET_UART_PARITY: int
SET_UART_NUM_STOP_BITS: int
OPEN_I2C: int
READ_I2C: int
WRITE_I2C: int
CLOSE_I2C: int
RESET_I2C: int
SET_I2C_FREQUENCY: int
SET_I2C_ADDR_SIZE: int
OPEN_AIO: int
CLOSE_AIO: int
OPEN_SPI: int
READ_SPI: int
WRITE_SPI: int
READ_AND_WRITE_SPI: int
CLOSE_SPI: int
RESET_SPI: int
SET_SPI_DATA_SIZE: int
SET_SPI_FIRST_BIT: int
SET_SPI_PRESCALER: int
SET_SPI_CPOL: int
SET_SPI_CPHA: int
OPEN_AI: int
SET_AI_SAMPLING_RATE: int
SET_AI_MODE: int
SET_AI_NUM_SAMPLES: int
SET_AI_ENABLED_CS: int
READ_AI_ON_DEMAND: int
OPEN_AI_STREAMING: int
START_AI_STREAMING: int
CLOSE_AI_STREAMING: int
CHECK_CALCULATUON: int
CLEAR_DATA: int
CHECK_BUFFER_STATUS: int
GET_AI_COUNTERS: int
READ_AI_ON_DEMAND_VARIABLE: int
START_AI_STREAMING_VARIABLE: int
CLOSE_AI: int
AI_RESET_BUFFER: int
AI_GET_DATA: int
AI_START_STREAMING_24BIT: int
AI_SET_TRIG_MODE: int
READAI24BIT: int
OPEN_AO: int
WRITE_AO_BY_CHANNEL: int
INIT_AO_BUFFER: int
PUSH_TO_AO_BUFFER: int
GET_AO_COUNTERS: int
WRITE_AO_SYNCHRONIZED: int
GET_AO_VALUES: int
CLOSE_AO: int
OPEN_AO_STREAMING: int
START_AO_STREAMING: int
STOP_AO_STREAMING: int
CLOSE_AO_STREAMING: int
SET_AO_SPAN: int
SET_AO_MODE: int
SET_AO_SAMPLING_RATE: int
SET_AO_NUM_SAMPLES: int
SET_AO_ENABLED_CHANNELS: int
SET_AO_FORM: int
SET_AO_FORM_PARAM: int
SET_AO_PUSH_TO_BUFFER: int
GET_AO_MODE: int
GET_AO_STATE: int
GET_AO_ENABLED_CHANNELS: int
MOTION: int
OPEN_CONNECTOR_MOTION: int
SET_CONNECTOR_MOTION: int
CLOSE_CONNECTOR_MOTION: int
START_MOTION_MONITORING: int
LOAD_DIO_STARTUP: int
SAVE_DIO_STARTUP: int
GET_DIO_CURRENT: int
SET_DIO_CURRENT: int
TOGGLE_DIO_DIR: int
GET_DIO_STATE: int
SET_DIO_STATE: int
READ_DI: int
WRITE_DO: int
READ_AND_GET_DI: int
SET_AND_WRITE_DO: int
SET_SLOT_DI: int
SET_SLOT_DO: int
SET_SLOT_IDLE: int
TOGGLE_AND_WRITE_DO: int
GET_DRIVER_INFO: int
GET_DATE_TIME: int
SET_DATE_TIME: int
GET_IP: int
SET_IP: int
GET_MAC: int
SET_MAC: int
GET_EEPROM_PAGE: int
SET_EEPROM_PAGE: int
GET_EEPROM_DEVICE: int
REBOOT: int
REBOOT_ON_BOOTLOADER: int
GET_DEVICE_INFO: int
CHECK_MAC_AND_SET_IP: int
CHECK_MAC_AND_REBOOT: int
SET_EEPROM_BYTE: int
GET_SLOT_MODE: int
SET_SLOT_MODE: int
GET_DEV_ALIAS: int
SET_DEV_ALIAS: int
RTC_START_ALARM: int
RTC_STOP_ALARM: int
RTC_GET_ALARM_STATE: int
RTC_GET_ALARM_CONFIG: int
RTC_GET_ALARM_TRIG: int
PULSE_OPEN: int
PULSE_START: int
PULSE_READ: int
PULSE_STOP: int
PULSE_CLOSE: int
PULSE_SET_EDGE: int
PULSE_SET_VALUE: int
PULSE_SET_FRQ_WINDOW: int
PULSE_GET_VALUE: int
PULSE_GET_FRQ_WINDOW: int
ENCODER_OPEN: int
ENCODER_START: int
ENCODER_READ: int
ENCODER_STOP: int
ENCODER_CLOSE: int
ENCODER_SET_VALUE: int
ENCODER_SET_DIR: int
ENCODER_SET_FRQ_WINDOW: int
ENCODER_GET_DIR: int
ENCODER_GET_FRQ_WINDOW: int
RELAY_READ: int
RELAY_SAVE: int
MOTION_READ_REG: int
MOTION_WRITE_REG: int
MOTION_GET_PARAM: int
MOTION_SET_PARAM: int
MOTION_LOAD_PARAM: int
MOTION_SAVE_PARAM: int
MOTION_RESET_FACTORY: int
MOTION_GET_PROC_STATE: int
MOTION_STOP_PROC: int
MOTION_START_V_MOVE: int
MOTION_START_P_MOVE: int
MOTION_START_SCAN_MOVE: int
MOTION_START_FIND_END: int
MOTION_START_FIND_HOME: int
MOTION_START_FIND_Z: int
POT_OPEN: int
POT_READ: int
POT_WRITE_BY_CS: int
POT_WRITE_ALL_CS: int
POT_CLOSE: int
AHRS_OPEN: int
AHRS_START: int
AHRS_STOP: int
AHRS_CLOSE: int
AHRS_RESET: int
AHRS_SET_GNRL: int
AHRS_VQF_SET_TAU: int
AHRS_VQF_SET_ENABLING: int
AHRS_VQF_SET_GYRO_BIAS: int
AHRS_VQF_SET_REST_DETECT: int
AHRS_VQF_SET_MAG_DETECT: int
AHRS_VQF_SET_MAG_REF: int
AHRS_VQF_SET_MAG_REJECT: int
AHRS_DEBUG: int
AHRS_GET_RAW_DATA: int
AHRS_GET_ESTIMATES: int
AHRS_GET_COUNTER: int
SD_OPEN: int
SD_CLOSE: int
SD_GET_CAPACITY: int
SD_OPEN_FILE: int
SD_WRITE_FILE: int
SD_READ_FILE: int
SD_CLOSE_FILE: int
NETCOM_CHECK_MAC_RINGING: int
SNTP_SYNC_NOW: int
SNTP_GET_SYNC_STATUS: int
SNTP_GET_SERVER_IP: int
SNTP_SET_SERVER_IP: int
SNTP_GET_SYNC_PERIOD: int
SNTP_SET_SYNC_PERIOD: int
DRONE_GET_SERIAL_NUMBER: int
DRONE_GET_FIRMWARE_VERSION: int
DRONE_READ_STATUS: int
DRONE_GET_ACTIVE_STATUS: int
DRONE_SET_ACTIVE_STATUS: int
DRONE_GET_TAKEOFF_STATUS: int
DRONE_SET_TAKEOFF_STATUS: int
DRONE_GET_LANDING_STATUS: int
DRONE_SET_LANDING_STATUS: int
DRONE_READ_INPOSITION: int
DRONE_READ_TRAJECTORY: int
DRONE_READ_TRAJECTORY_DONE: int
DRONE_MOVE_RELATIVE_X_VEHICLE: int
DRONE_MOVE_RELATIVE_Y_VEHICLE: int
DRONE_MOVE_RELATIVE_XY_VEHICLE: int
DRONE_MOVE_ABSOLUTE_ROLL_VEHICLE: int
DRONE_MOVE_ABSOLUTE_PITCH_VEHICLE: int
DRONE_MOVE_RELATIVE_YAW_NED: int
DRONE_MOVE_RELATIVE_X_NED: int
DRONE_MOVE_RELATIVE_Y_NED: int
DRONE_MOVE_RELATIVE_Z_NED: int
DRONE_MOVE_RELATIVE_XY_NED: int
DRONE_MOVE_ABSOLUTE_YAW_NED: int
DRONE_MOVE_ABSOLUTE_X_NED: int
DRONE_MOVE_ABSOLUTE_Y_NED: int
DRONE_MOVE_ABSOLUTE_Z_NED: int
DRONE_MOVE_ABSOLUTE_XY_NED: int
DRONE_READ_ATTITUDE_NED: int
DRONE_READ_POSITION_NED: int
DRONE_READ_MOVE_VEHICLE_REL_YAW: int
DRONE_WRITE_MOVE_VEHICLE_REL_YAW: int
DRONE_READ_MOVE_VEHICLE_REL_X: int
DRONE_READ_MOVE_VEHICLE_REL_Y: int
DRONE_READ_MOVE_VEHICLE_REL_Z: int
DRONE_WRITE_MOVE_VEHICLE_REL_Z: int
DRONE_READ_MOVE_VEHICLE_REL_XY: int
DRONE_READ_MOVE_VEHICLE_ABS_YAW: int
DRONE_WRITE_MOVE_VEHICLE_ABS_YAW: int
DRONE_READ_MOVE_VEHICLE_REL_XYZ: int
DRONE_WRITE_MOVE_VEHICLE_REL_XYZ: int
DRONE_READ_MOVE_VEHICLE_ABS_ROLL: int
DRONE_READ_MOVE_VEHICLE_ABS_PITCH: int
DRONE_READ_MOVE_BASE_REL_YAW: int
DRONE_WRITE_MOVE_BASE_REL_YAW: int
DRONE_READ_MOVE_BASE_REL_X: int
DRONE_WRITE_MOVE_BASE_REL_X: int
DRONE_READ_MOVE_BASE_REL_Y: int
DRONE_WRITE_MOVE_BASE_REL_Y: int
DRONE_READ_MOVE_BASE_REL_Z: int
DRONE_WRITE_MOVE_BASE_REL_Z: int
DRONE_READ_MOVE_BASE_REL_XY: int
DRONE_WRITE_MOVE_BASE_REL_XY: int
DRONE_READ_MOVE_BASE_REL_XYZ: int
DRONE_WRITE_MOVE_BASE_REL_XYZ: int
DRONE_READ_MOVE_BASE_ABS_YAW: int
DRONE_WRITE_MOVE_BASE_ABS_YAW: int
DRONE_READ_MOVE_BASE_ABS_X: int
DRONE_WRITE_MOVE_BASE_ABS_X: int
DRONE_READ_MOVE_BASE_ABS_Y: int
DRONE_WRITE_MOVE_BASE_ABS_Y: int
DRONE_READ_MOVE_BASE_ABS_Z: int
DRONE_WRITE_MOVE_BASE_ABS_Z: int
DRONE_READ_MOVE_BASE_ABS_XY: int
DRONE_WRITE_MOVE_BASE_ABS_XY: int
DRONE_READ_MOVE_BASE_ABS_XYZ: int
DRONE_WRITE_MOVE_BASE_ABS_XYZ: int
DRONE_READ_MOVE_NED_REL_YAW: int
DRONE_READ_MOVE_NED_REL_X: int
DRONE_READ_MOVE_NED_REL_Y: int
DRONE_READ_MOVE_NED_REL_Z: int
DRONE_READ_MOVE_NED_REL_XY: int
DRONE_READ_MOVE_NED_REL_XYZ: int
DRONE_WRITE_MOVE_NED_REL_XYZ: int
DRONE_READ_MOVE_NED_ABS_YAW: int
DRONE_READ_MOVE_NED_ABS_X: int
DRONE_READ_MOVE_NED_ABS_Y: int
DRONE_READ_MOVE_NED_ABS_Z: int
DRONE_READ_MOVE_NED_ABS_XY: int
DRONE_READ_MOVE_NED_ABS_XYZ: int
DRONE_WRITE_MOVE_NED_ABS_XYZ: int
DRONE_READ_MOVE_GEO_ABS_YAW: int
DRONE_WRITE_MOVE_GEO_ABS_YAW: int
DRONE_READ_MOVE_GEO_ABS_LONGITUDE: int
DRONE_WRITE_MOVE_GEO_ABS_LONGITUDE: int
DRONE_READ_MOVE_GEO_ABS_LATITUDE: int
DRONE_WRITE_MOVE_GEO_ABS_LATITUDE: int
DRONE_READ_MOVE_GEO_ABS_Z: int
DRONE_WRITE_MOVE_GEO_ABS_Z: int
DRONE_READ_MOVE_GEO_ABS_LONGITUDE_LATITUDE: int
DRONE_WRITE_MOVE_GEO_ABS_LONGITUDE_LATITUDE: int
DRONE_READ_ATTITUDE_BASE: int
DRONE_READ_ATTITUDE_BASE_QUAT: int
DRONE_READ_ATTITUDE_NED_QUAT: int
DRONE_READ_POSITION_BASE: int
DRONE_READ_POSITION_GEO: int
DRONE_STOP_MOVING: int
DRONE_READ_FLIGHT_MODE: int
DRONE_SET_FLIGHT_MODE: int
DRONE_READ_TASK_CONTROL_MODE: int
DRONE_READ_NED_STATE_RPYXYZ: int
DRONE_READ_BATTERY: int
DRONE_SET_BAROMETER_MODE: int
STREAMING_CMD_LIST: list[int]
BROADCAST_CMD_LIST: list[int]
CMD_INDEX: int
CMD_STX: int
CMD_CR: int
CMD_LF: int
CMD_INDEX_2: int
CMD_STX_2: int
CMD_CR_2: int
CMD_LF_2: int
USB_PKT_SIZE: int
TCP_PKT_LENGTH_MAX: int
TCP_DATA_LENGTH_MAX: int
UDP_PKT_LENGTH_MAX: int
UART_PKT_LENGTH_MAX: int
USB_VID: int
USB_PID: int
USB_EP_IN: int
USB_EP_OUT: int
USB_61E_PLUS_VID: int
USB_61E_PLUS_PID: int
USB_61E_RECEIVE_BYTE: int
USB_61E_RECEIVE_TIMEOUT: int
USB_61E_RECEIVE_TOTAL_BYTES: int
TCP_CMD_PORT: int
TCP_DATA_PORT: int
UDP_SEND_PORT: int
UDP_RECV_PORT: int
CONNECTION_TIMEOUT: int
PACKET_TIMEOUT: int
RETRY_TIMEOUT: int
NUM_RETRIES: int
NUM_BCST_RETRIES: int
QUEUE_SIZE_MAX: int
QUEUE_TIMEOUT: int
ECHO_DELAY: float
UART_READ_TIMEOUT: float
__version__: str
errUSBConnection: int
errNetConnection: int
errNetConnectionLost: int
errPacketTimeout: int
errUARTConnection: int
errAPINotSupport: int
errPinsNotExist: int
errPinsValueNotDefine: int
errInputTypeNotConsistent: int
errInputTypeNotCorrect: int
errInputDataNotInRange: int
errIniFileName: int
errIniFileNotFound: int
errDIPort: int
errDOPort: int
errPWMchannel: int
errCounterchannel: int
errRelayIndex: int
errRelayPort: int
errEncoderChannel: int
errDIChannel: int
errDOChannel: int
errAIChannel: int
errAIPort: int
errAIChip: int
errAIMode: int
errAIRate: int
errAITriggerMode: int
errAOPort: int
errAOMode: int
errAOSpan: int
errAOChannel: int
errAOForm: int
errAORate: int
errAHRSPort: int
errAHRSMode: int
errThermalPort: int
errThermalChipSelect: int
errThermalMode: int
errThermalType: int
errI2CPort: int
errI2CClock: int
errI2CAddressSize: int
errSPIPort: int
errSPIDataLengthExceedMax: int
errSPIDataSize: int
errSPIFirstBit: int
errSPIPrescaler: int
errSPIMode: int
errUARTPort: int
errUARTExceedMaxLength: int
errUARTBaudRate: int
errUARTStopBit: int
errUARTParity: int
errUARTDataBit: int
errCANPort: int
errCANSpeed: int
errCANDataLength: int
errCANTX: int
errCANTXPriority: int
errMotionAxis: int
errMotionPort: int
errMotionStopMode: int
errMotionSearchType: int
errMotionSearchDirection: int
errMotionEnable: int
errMotionStepperOutput: int
errMotionDirection: int
errMotionPolarity: int
errMotionCaptureType: int
errMotionCaptureMode: int
errMotionBreakPoint: int
errMotionOperationMode: int
errMotionAccelerationMode: int
errLatticeSlot: int
errDPOTPort: int
errDPOTChannel: int
errDroneFlightMode: int
errDroneZHeight: int
errDroneAngle: int
errFirmwareEnable: int
errFirmwarePinIndex: int
errFirmwareHALIndex: int
errFirmwareZVRIndex: int
errFirmwareRTC: int
errFirmwareI2C: int
errFirmwareSPI: int
errFirmwareUART: int
errFirmwareTIM: int
errFirmwarePWM: int
errFirmwarePulse: int
errFirmwareEncoder: int
errFirmwareEEPROM: int
errFirmwareOLED: int
errFirmwareCore: int
errFirmwareDIO: int
errFirmwareRelay: int
errFirmwareAI: int
errFirmwareAO: int
errFirmwareMotion: int
errFirmwareDrive: int
errFirmwareThermal: int
errFirmwareCAN: int
errFirmwareUSB: int
errFirmwareTCP: int
errFirmwareUDP: int
errFirmwareBootloader: int
errFirmwareParser: int
errFirmwareOther: int
warnLibNotFound: int
warnAIOverflow: int
warnUARTOverflow: int
warnCANOverflow: int
warnAHRSOverflow: int
MOTION_00_JK: int
MOTION_01_DJ: int
MOTION_02_AC: int
MOTION_03_DC: int
MOTION_04_SV: int
MOTION_05_DV: int
MOTION_06_TP: int
MOTION_07_DP: int
MOTION_08_CP: int
MOTION_09_LP: int
MOTION_0A_RP: int
MOTION_0B_SP: int
MOTION_0C_SM: int
MOTION_0D_AO: int
MOTION_0E_LX: int
MOTION_0F_RX: int
MOTION_10_MR0: int
MOTION_11_MR1: int
MOTION_12_MR2: int
MOTION_13_MR3: int
MOTION_14_HV: int
MOTION_15_IV: int
MOTION_16_TM: int
MOTION_17_SP1: int
MOTION_18_SP2: int
MOTION_19_TX: int
MOTION_1A_HLN: int
MOTION_1B_HLV: int
MOTION_1C_GPIO: int
MOTION_1F_NOP: int
MOTION_20_MRM: int
MOTION_21_P1M: int
MOTION_22_P2M: int
MOTION_23_H1M: int
MOTION_24_H2M: int
MOTION_25_FLM: int
MOTION_26_S0M: int
MOTION_27_S1M: int
MOTION_28_S2M: int
MOTION_29_S3M: int
MOTION_2A_IPM: int
MOTION_30_LP: int
MOTION_31_RP: int
MOTION_32_CV: int
MOTION_33_CA: int
MOTION_34_MR0: int
MOTION_35_MR1: int
MOTION_36_MR2: int
MOTION_37_MR3: int
MOTION_38_CT: int
MOTION_39_TX: int
MOTION_3A_CHLN: int
MOTION_3B_HLV: int
MOTION_3D_WR1: int
MOTION_3E_WR2: int
MOTION_3F_WR3: int
MOTION_40_MRM: int
MOTION_41_P1M: int
MOTION_42_P2M: int
MOTION_43_AC: int
MOTION_44_SV: int
MOTION_45_DV: int
MOTION_46_TP: int
MOTION_47_SP1: int
MOTION_48_UI: int
MOTION_50_DRVRL: int
MOTION_51_DRVNR: int
MOTION_52_DRVVP: int
MOTION_53_DRVVM: int
MOTION_54_DRVAB: int
MOTION_56_DRVSBRK: int
MOTION_57_DRVFBRK: int
MOTION_58_DIRCP: int
MOTION_59_DIRCM: int
MOTION_5A_HMSRC: int
MOTION_60_LHK1: int
MOTION_61_LHK2: int
MOTION_62_LHK3: int
MOTION_63_LHK4: int
MOTION_64_CHKCW: int
MOTION_65_CHKCCW: int
MOTION_66_BHK2: int
MOTION_67_BHK3: int
MOTION_68_BHK4: int
MOTION_69_HLCW: int
MOTION_6A_HLCCW: int
MOTION_6B_HLPCW: int
MOTION_6C_HLPCCW: int
MOTION_6D_DECEN: int
MOTION_6E_DECDIS: int
MOTION_6F_CLRSTEP: int
MOTION_70_VINC: int
MOTION_71_VDEC: int
MOTION_72_DCC: int
MOTION_73_TMSTA: int
MOTION_74_TMSTP: int
MOTION_75_SPSTA: int
MOTION_76_SPSTP: int
MOTION_77_DHOLD: int
MOTION_78_DFREE: int
MOTION_79_R2CLR: int
MOTION_7A_RR3P0: int
MOTION_7B_RR3P1: int
MOTION_7C_MFPC: int
MOTION_81_SYNC0EN: int
MOTION_82_SYNC1EN: int
MOTION_83_SYNC01EN: int
MOTION_84_SYNC2EN: int
MOTION_85_SYNC02EN: int
MOTION_86_SYNC12EN: int
MOTION_87_SYNC012EN: int
MOTION_88_SYNC3EN: int
MOTION_89_SYNC03EN: int
MOTION_8A_SYNC13EN: int
MOTION_8B_SYNC013EN: int
MOTION_8C_SYNC23EN: int
MOTION_8D_SYNC023EN: int
MOTION_8E_SYNC123EN: int
MOTION_8F_SYNC0123EN: int
MOTION_91_SYNC0DIS: int
MOTION_92_SYNC1DIS: int
MOTION_93_SYNC01DIS: int
MOTION_94_SYNC2DIS: int
MOTION_95_SYNC02DIS: int
MOTION_96_SYNC12DIS: int
MOTION_97_SYNC012DIS: int
MOTION_98_SYNC3DIS: int
MOTION_99_SYNC03DIS: int
MOTION_9A_SYNC13DIS: int
MOTION_9B_SYNC013DIS: int
MOTION_9C_SYNC23DIS: int
MOTION_9D_SYNC023DIS: int
MOTION_9E_SYNC123DIS: int
MOTION_9F_SYNC0123DIS: int
MOTION_A1_SYNC0ACT: int
MOTION_A2_SYNC1ACT: int
MOTION_A3_SYNC01ACT: int
MOTION_A4_SYNC2ACT: int
MOTION_A5_SYNC02ACT: int
MOTION_A6_SYNC12ACT: int
MOTION_A7_SYNC012ACT: int
MOTION_A8_SYNC3ACT: int
MOTION_A9_SYNC03ACT: int
MOTION_AA_SYNC13ACT: int
MOTION_AB_SYNC013ACT: int
MOTION_AC_SYNC23ACT: int
MOTION_AD_SYNC023ACT: int
MOTION_AE_SYNC123ACT: int
MOTION_AF_SYNC0123ACT: int
MOTION_C0_SP0L: int
MOTION_C1_SP0E: int
MOTION_C2_SP1L: int
MOTION_C3_SP1E: int
MOTION_C4_SP2L: int
MOTION_C5_SP2E: int
MOTION_C6_INPL: int
MOTION_C7_INPE: int
MOTION_C8_ALML: int
MOTION_C9_ALME: int
MOTION_CA_HLML: int
MOTION_CB_HLME: int
MOTION_CC_HLMM: int
MOTION_CD_SLME: int
MOTION_CE_SLMO: int
MOTION_CF_SLMM: int
MOTION_D0_MANLD: int
MOTION_D1_DSNDE: int
MOTION_D2_SACC: int
MOTION_D3_DPMD0: int
MOTION_D4_DPMD1: int
MOTION_D5_DPL: int
MOTION_D6_DIRL: int
MOTION_D7_DPINV: int
MOTION_D8_PIMD0: int
MOTION_D9_PIMD1: int
MOTION_DA_PIL: int
MOTION_DB_PIINV: int
MOTION_DC_LMINV: int
MOTION_DD_AVTRI: int
MOTION_DE_TMMD: int
MOTION_E0_WR0: int
MOTION_E1_WR1: int
MOTION_E2_WR2: int
MOTION_E3_WR3: int
MOTION_E4_WR4: int
MOTION_E5_WR5: int
MOTION_E6_WR6: int
MOTION_E7_WR7: int
MOTION_E8_RR0: int
MOTION_E9_RR1: int
MOTION_EA_RR2: int
MOTION_EB_RR3: int
MOTION_EC_RR4: int
MOTION_ED_RR5: int
MOTION_EE_RR6: int
MOTION_EF_RR7: int
MOTION_FC_I2CCHK: int
MOTION_FD_I2CRST: int
MOTION_FE_HDRST: int
PAWL_00_GCONF: int
PAWL_01_GSTAT: int
PAWL_02_IFCNT: int
PAWL_03_SLAVECONF: int
PAWL_04_INP_OUT: int
PAWL_05_X_COMPARE: int
PAWL_06_OTP_PROG: int
PAWL_0A_DRV_CONF: int
PAWL_0B_GLOBAL_SCALER: int
PAWL_10_IHOLD_IRUN: int
PAWL_11_TPOWERDOWN: int
PAWL_12_TSTEP: int
PAWL_13_TPWMTHRS: int
PAWL_14_TCOOLTHRS: int
PAWL_15_THIGH: int
PAWL_20_RAMPMODE: int
PAWL_21_XACTUAL: int
PAWL_22_VACTUAL: int
PAWL_23_VSTART: int
PAWL_24_A1: int
PAWL_25_V1: int
PAWL_26_AMAX: int
PAWL_27_VMAX: int
PAWL_28_DMAX: int
PAWL_29_TVMAX: int
PAWL_2A_D1: int
PAWL_2B_VSTOP: int
PAWL_2C_TZEROWAIT: int
PAWL_2D_XTARGET: int
PALW_2E_V2: int
PAWL_2F_A2: int
PAWL_30_D2: int
PAWL_31_AACTUAL: int
PAWL_33_VDCMIN: int
PAWL_34_SWMODE: int
PAWL_35_RAMPSTAT: int
PAWL_36_XLATCH: int
PAWL_38_ENCMODE: int
PAWL_39_XENC: int
PAWL_3A_ENC_CONST: int
PAWL_3B_ENC_STATUS: int
PAWL_3C_ENC_LATCH: int
PAWL_3D_ENC_DEVIATION: int
PAWL_50_ADC_VSUPPLY_AIN: int
PAWL_51_ADC_TEMP: int
PAWL_52_OTW_OV_VTH: int
PAWL_60_MSLUT0: int
PAWL_61_MSLUT1: int
PAWL_62_MSLUT2: int
PAWL_63_MSLUT3: int
PAWL_64_MSLUT4: int
PAWL_65_MSLUT5: int
PAWL_66_MSLUT6: int
PAWL_67_MSLUT7: int
PAWL_68_MSLUTSEL: int
PAWL_69_MSLUTSTART: int
PAWL_6A_MSCNT: int
PAWL_6B_MSCURACT: int
PAWL_6C_CHOPCONF: int
PAWL_6D_COOLCONF: int
PAWL_6E_DCCTRL: int
PAWL_6F_DRVSTATUS: int
PAWL_70_PWMCONF: int
PAWL_71_PWMSCALE: int
PAWL_72_PWM_AUTO: int
PAWL_74_SG4_THRS: int
PAWL_75_SG4_RESULT: int
PAWL_76_SG4_IND: int
LABEL_DICT: dict[str, str]
PRODUCT_LIST: list[str]
HANDLE_LIST: list[str]
HANDLE_DICT: dict[str, str]
HANDLE_PROPERTIES: dict[str, dict[str, int]]
CATEGORY_CONSOLE_LIST: list[str]
CATEGORY_CONSOLE_DICT: dict[str, list[str]]
EXAMPLE_CONSOLE_DICT: dict[str, str]
EXAMPLE_GUI_DICT: dict[str, str]
SCENARIO: dict[str, str]
SEE_MORE: str
SPYDER: str
NOTICE: str
NOTICE_DRONE: str
def printGenericError(err: BaseException) -> None:
    """Prints the class and the text of an error or warning on one line.

    Args:
        err: the error or warning.
    """
def check(result: Any) -> Any:
    """Raises the failure that a negative code stands for; anything else is returned as it is. Items of lists and tuples are not checked, since they may be readings.

    Args:
        result: what an operation returned.
    """
def checkFirmwareError(error_code: int) -> None:
    """Raises the error that a status byte stands for.

    Args:
        error_code: status byte of a device's reply.
    """
def clearBit(number: int, index: int) -> int:
    """Clears a bit.

    Args:
        number: the bits.
        index: bit, 0 being the least significant.
    """
def readBit(number: int, index: int) -> int:
    """Reads a bit.

    Args:
        number: the bits.
        index: bit, 0 being the least significant.
    """
def fillBit(number: int, index: int) -> int:
    """Sets a bit.

    Args:
        number: the bits.
        index: bit, 0 being the least significant.
    """
def writeBit(number: int, index: int, value: int) -> int:
    """Writes a bit.

    Args:
        number: the bits.
        index: bit, 0 being the least significant.
        value: 1 sets the bit, anything else clears it.
    """
def changeToLatticePort(slot: int) -> int:
    """Turns a slot into its port.

    Args:
        slot: slot of the chassis, from 1.
    """
def convertU16To2U8(value: float) -> list[int]:
    """Packs a number of 16 bits, unsigned.

    Args:
        value: the number, 16 bits, unsigned.
    """
def convert2U8ToU16(int_list: Sequence[int]) -> int:
    """Unpacks a number of 16 bits, unsigned.

    Args:
        int_list: byte values, most significant first.
    """
def convertU32To4U8(value: float) -> list[int]:
    """Packs a number of 32 bits, unsigned.

    Args:
        value: the number, 32 bits, unsigned.
    """
def convert4U8ToU32(int_list: Sequence[int]) -> int:
    """Unpacks a number of 32 bits, unsigned.

    Args:
        int_list: byte values, most significant first.
    """
def convertU64To8U8(value: float) -> list[int]:
    """Packs a number of 64 bits, unsigned.

    Args:
        value: the number, 64 bits, unsigned.
    """
def convert8U8ToU64(int_list: Sequence[int]) -> int:
    """Unpacks a number of 64 bits, unsigned.

    Args:
        int_list: byte values, most significant first.
    """
def convertI16To2U8(value: float) -> list[int]:
    """Packs a number of 16 bits, signed.

    Args:
        value: the number, 16 bits, signed.
    """
def convert2U8ToI16(int_list: Sequence[int]) -> int:
    """Unpacks a number of 16 bits, signed.

    Args:
        int_list: byte values, most significant first.
    """
def convertI32To4U8(value: float) -> list[int]:
    """Packs a number of 32 bits, signed.

    Args:
        value: the number, 32 bits, signed.
    """
def convert4U8ToI32(int_list: Sequence[int]) -> int:
    """Unpacks a number of 32 bits, signed.

    Args:
        int_list: byte values, most significant first.
    """
def convertI64To8U8(value: float) -> list[int]:
    """Packs a number of 64 bits, signed.

    Args:
        value: the number, 64 bits, signed.
    """
def convert8U8ToI64(int_list: Sequence[int]) -> int:
    """Unpacks a number of 64 bits, signed.

    Args:
        int_list: byte values, most significant first.
    """
def convertF32To4U8(value: float) -> list[int]:
    """Packs a number of a 32-bit float.

    Args:
        value: the number, a 32-bit float.
    """
def convert4U8ToF32(int_list: Sequence[int]) -> float:
    """Unpacks a number of a 32-bit float.

    Args:
        int_list: byte values, most significant first.
    """
def convertF64To8U8(value: float) -> list[int]:
    """Packs a number of a 64-bit float.

    Args:
        value: the number, a 64-bit float.
    """
def convert8U8ToF64(int_list: Sequence[int]) -> float:
    """Unpacks a number of a 64-bit float.

    Args:
        int_list: byte values, most significant first.
    """
def convertDegToRad(degrees: float) -> float:
    """Turns degrees into radians.

    Args:
        degrees: angle in degrees.
    """
def convertRadToDeg(radians: float) -> float:
    """Turns radians into degrees.

    Args:
        radians: angle in radians.
    """
def convertU8ListToStr(int_list: Sequence[int]) -> str:
    """Decodes UTF-8 text, up to its first zero character.

    Args:
        int_list: byte values, most significant first.
    """
def convertStrToU8List(str_: str) -> list[int]:
    """Lists the code point of each character.

    Args:
        str_: the text.
    """
def convertIPAddrTo4U8(value: str) -> list[int]:
    """Splits an IPv4 address.

    Args:
        value: dotted address, "192.168.1.110".
    """
def convertMACAddrTo6U8(str_: str) -> list[int]:
    """Splits a MAC address.

    Args:
        str_: hexadecimal numbers with colons between them.
    """
def convertIntToBinaryList(value_int: int, width: int) -> list[int]:
    """Lists the bits of a number.

    Args:
        value_int: the bits.
        width: number of bits to list.
    """
def convertIndexAndBinaryListsToInt(index_list: Iterable[int], binary_list: Iterable[int]) -> int:
    """Makes a mask of positions and their values.

    Args:
        index_list: bit positions.
        binary_list: one value per position, clipped to 0 or 1.
    """
def convertIndexListToInt(index_list: Iterable[int]) -> int:
    """Makes a mask of positions.

    Args:
        index_list: bit positions.
    """
def convertIntToIndexList(value_int: int) -> list[int]:
    """Lists the positions of the set bits.

    Args:
        value_int: the bits.
    """
def coerce(list_: Iterable[float], lower: float = 0, upper: float = 1) -> list:
    """Limits every value to a range.

    Args:
        list_: the values.
        lower: least value.
        upper: greatest value.
    """
def adjustDataList(data_list: Iterable, list_length: int = 8, padding_num: object = 0) -> list:
    """Cuts or fills a list to a length.

    Args:
        data_list: the items.
        list_length: number of items of the result.
        padding_num: value that fills the end.
    """
def checkInputType(data: object, correct_type: type | tuple[type, ...]) -> None:
    """Raises InputTypeNotCorrectError unless the value is of the type.

    Args:
        data: the value.
        correct_type: the type it must be of, or several.
    """
def checkInputTypeConsistent(data: object, data2: object) -> bool:
    """Raises InputTypeNotConsistentError unless the values are of one type.

    Args:
        data: one value.
        data2: the other one.
    """
def checkEachItemInRange(int_list: Iterable[float], low: float = 0, high: float = 255, msg: str | None = None) -> None:
    """Raises InputDataNotInRangeError unless all values are in the range.

    Args:
        int_list: the values.
        low: least allowed value.
        high: greatest allowed value.
        msg: message of the error; None for its own.
    """
def checkFuncPinMap(cell: Sequence[int], pinmap_list: Sequence[str], allow_state_list: Sequence[str]) -> bool:
    """Checks whether a pin has an allowed use.

    Args:
        cell: port and pin.
        pinmap_list: what each pin of the port is used for.
        allow_state_list: uses that are allowed.
    """
def checkPinMap(cell_list: Iterable[Sequence[int]], pinmap_list: Sequence[str], allow_state_list: Sequence[str]) -> bool:
    """Checks whether all pins have an allowed use.

    Args:
        cell_list: pairs of port and pin.
        pinmap_list: what each pin of the port is used for.
        allow_state_list: uses that are allowed.
    """
def getLibUSB1() -> USBLibrary | None:
    """Looks for libusb-1.0 beside the package."""
def open(where: str, port: int | None = None, data_port: int | None = None, baudrate: int | None = None, verbose: bool = True) -> Any:
    """Asks a device for its model and connects a handle of its class.

    Args:
        where: "192.168.1.110", "box.local:7007", "/dev/ttyUSB0", "COM4", a serial number, an alias or a MAC address.
        port: TCP port of the commands, if `where` names none; 7 unless set.
        data_port: TCP port of a Wi-Fi device's samples; 1336 unless set.
        baudrate: speed of a serial line in bits per second.
        verbose: whether to print a line.
    """

class Error(Exception):
    """Root of the library's errors."""
    code: int
    msg: str
    def __init__(self, code: int, msg: str, *args: object, **kwargs: object) -> None:
        """Sets a code and a message.

        Args:
            code: number of the error or warning.
            msg: what happened.
            *args: ignored.
        """
    def __str__(self) -> str:
        """Returns code and message as text."""

class ZVRWarning(UserWarning):
    """Root of the library's warnings. Constructing one prints the call stack and warns."""
    code: int
    msg: str
    def __init__(self, code: int, msg: str, *args: object, **kwargs: object) -> None:
        """Sets a code and a message, and reports them.

        Args:
            code: number of the error or warning.
            msg: what happened.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """
    def __str__(self) -> str:
        """Returns code and message as text."""

class USBConnectionError(Error, ConnectionError):
    """Failed to connect to ZVR DAQ. Please check USB plugin status and serial number."""
    def __init__(self, msg: str = 'Failed to connect to ZVR DAQ. Please check USB plugin status and serial number.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class NetworkConnectionError(Error, ConnectionError):
    """Failed to connect to ZVR DAQ. Please check network status and IP address."""
    def __init__(self, msg: str = 'Failed to connect to ZVR DAQ. Please check network status and IP address.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class NetworkConnectionLostError(Error, ConnectionError):
    """Network DAQ connection lost."""
    def __init__(self, msg: str = 'Network DAQ connection lost.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class ReceivePacketTimeoutError(Error, TimeoutError):
    """Receive packet timeout."""
    def __init__(self, msg: str = 'Receive packet timeout.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class UARTConnectionError(Error, ConnectionError):
    """Failed to connect to drone. Please check COM port."""
    def __init__(self, msg: str = 'Failed to connect to drone. Please check COM port.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class APINotSupportError(Error):
    """In this product, there is no support for this API."""
    def __init__(self, msg: str = 'In this product, there is no support for this API.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class PinsNotExistError(Error, ValueError):
    """The pin index is not valid or is not recognized."""
    def __init__(self, msg: str = 'The pin index is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class PinsValueNotDefineError(Error, ValueError):
    """Inconsistency between the number of pins & the number of values."""
    def __init__(self, msg: str = 'Inconsistency between the number of pins & the number of values.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class InputTypeNotConsistentError(Error, TypeError):
    """Inconsistency between the type of pins & the type of values."""
    def __init__(self, msg: str = 'Inconsistency between the type of pins & the type of values.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class InputTypeNotCorrectError(Error, TypeError):
    """The data type is not valid or is not recognized."""
    def __init__(self, msg: str = 'The data type is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class InputDataNotInRangeError(Error, ValueError):
    """The input value is not the acceptable range."""
    def __init__(self, msg: str = 'The input value is not the acceptable range.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class IniFileExtensionNameError(Error, ValueError):
    """The Ini file extension name is not correct."""
    def __init__(self, msg: str = 'The Ini file extension name is not correct.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class IniFileNotFoundError(Error, FileNotFoundError):
    """No such file or directory."""
    def __init__(self, msg: str = 'No such file or directory.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class DIPortNotAvaliableError(Error, ValueError):
    """The DI port is not available or is already occupied by another process."""
    def __init__(self, msg: str = 'The DI port is not available or is already occupied by another process.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class DOPortNotAvaliableError(Error, ValueError):
    """The DO port is not available or is already occupied by another process."""
    def __init__(self, msg: str = 'The DO port is not available or is already occupied by another process.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class PWMChannelNotAvaliableError(Error, ValueError):
    """The PWM channel is not available."""
    def __init__(self, msg: str = 'The PWM channel is not available.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class CounterChannelNotAvaliableError(Error, ValueError):
    """The counter channel is not available."""
    def __init__(self, msg: str = 'The counter channel is not available.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class RelayCounterIndexError(Error, ValueError):
    """The relay counter index error is not valid or is not recognized."""
    def __init__(self, msg: str = 'The relay counter index error is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class RelayPortNotAvaliableError(Error, ValueError):
    """The relay port is not available or is already occupied by another process."""
    def __init__(self, msg: str = 'The relay port is not available or is already occupied by another process.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class EncoderChannelNotAvaliableError(Error, ValueError):
    """The encoder channel is not available"""
    def __init__(self, msg: str = 'The encoder channel is not available', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class DIChannelNotAvaliableError(Error, ValueError):
    """The DI channel is not available"""
    def __init__(self, msg: str = 'The DI channel is not available', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class DOChannelNotAvaliableError(Error, ValueError):
    """The DO channel is not available"""
    def __init__(self, msg: str = 'The DO channel is not available', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class AIChannelNotAvaliableError(Error, ValueError):
    """The AI channel is not available."""
    def __init__(self, msg: str = 'The AI channel is not available.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class AIPortNotAvaliableError(Error, ValueError):
    """The AI port is not available or is already occupied by another process."""
    def __init__(self, msg: str = 'The AI port is not available or is already occupied by another process.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class AICSNotAvaliableError(Error, ValueError):
    """The AI chip is not valid or is not recognized."""
    def __init__(self, msg: str = 'The AI chip is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class AIModeNotAvaliableError(Error, ValueError):
    """The AI mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The AI mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class AIRateNotVaildError(Error, ValueError):
    """The AI sampling rate is not valid or is not recognized."""
    def __init__(self, msg: str = 'The AI sampling rate is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class AITriggerModeNotAvaliableError(Error, ValueError):
    """The AI trigger mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The AI trigger mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class AOPortNotAvaliableError(Error, ValueError):
    """The AO port is not available or is already occupied by another process."""
    def __init__(self, msg: str = 'The AO port is not available or is already occupied by another process.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class AOModeNotVaildError(Error, ValueError):
    """The AO generation mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The AO generation mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class AOSpanNotVaildError(Error, ValueError):
    """The AO span mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The AO span mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class AOChannelNotAvaliableError(Error, ValueError):
    """The AO channel is not available."""
    def __init__(self, msg: str = 'The AO channel is not available.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class AOFormNotAvaliableError(Error, ValueError):
    """The AO form is not valid or is not recognized."""
    def __init__(self, msg: str = 'The AO form is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class AORateNotVaildError(Error, ValueError):
    """The AO sampling rate is not valid or is not recognized."""
    def __init__(self, msg: str = 'The AO sampling rate is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class AHRSPortNotAvaliableError(Error, ValueError):
    """The AHRS port is not available or is already occupied by another process."""
    def __init__(self, msg: str = 'The AHRS port is not available or is already occupied by another process.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class AHRSModeNotAvaliableError(Error, ValueError):
    """The AHRS mode is not available."""
    def __init__(self, msg: str = 'The AHRS mode is not available.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class ThermalPortNotAvaliableError(Error, ValueError):
    """The thermal port is not available or is already occupied by another process."""
    def __init__(self, msg: str = 'The thermal port is not available or is already occupied by another process.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class ThermalChipSelectNotAvaliableError(Error, ValueError):
    """The thermal channel is not available."""
    def __init__(self, msg: str = 'The thermal channel is not available.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class ThermalModeNotVaildError(Error, ValueError):
    """The thermal filter mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The thermal filter mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class ThermalTypeNotVaildError(Error, ValueError):
    """The thermal type mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The thermal type mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class I2CPortNotAvaliableError(Error, ValueError):
    """The I2C port is not available or is already occupied by another process."""
    def __init__(self, msg: str = 'The I2C port is not available or is already occupied by another process.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class I2CClockNotSupportError(Error, ValueError):
    """The I2C clock mode is not available."""
    def __init__(self, msg: str = 'The I2C clock mode is not available.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class I2CAddressSizeNotVaildError(Error, ValueError):
    """The I2C address mode is not available."""
    def __init__(self, msg: str = 'The I2C address mode is not available.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class SPIPortNotAvaliableError(Error, ValueError):
    """The SPI port is not available or is already occupied by another process."""
    def __init__(self, msg: str = 'The SPI port is not available or is already occupied by another process.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class SPIDataLengthExceedMaxError(Error, ValueError):
    """The length of data exceeds maximum transfer length of SPI."""
    def __init__(self, msg: str = 'The length of data exceeds maximum transfer length of SPI.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class SPIDataSizeNotVaildError(Error, ValueError):
    """The SPI data size mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The SPI data size mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class SPIFirstBitNotVaildError(Error, ValueError):
    """The SPI first bit mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The SPI first bit mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class SPIPrescalerNotVaildError(Error, ValueError):
    """The SPI prescaler mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The SPI prescaler mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class SPIModeNotVaildError(Error, ValueError):
    """The SPI mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The SPI mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class UARTPortNotAvaliableError(Error, ValueError):
    """The UART port is not available or is already occupied by another process."""
    def __init__(self, msg: str = 'The UART port is not available or is already occupied by another process.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class UARTExceedMaxLengthError(Error, ValueError):
    """The length of data exceeds maximum transfer length of UART."""
    def __init__(self, msg: str = 'The length of data exceeds maximum transfer length of UART.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class UARTBaudRateNotSupportError(Error, ValueError):
    """The UART baud rate is not valid or is not recognized."""
    def __init__(self, msg: str = 'The UART baud rate is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class UARTStopBitNotSupportError(Error, ValueError):
    """The UART stop bit mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The UART stop bit mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class UARTParityNotSupportError(Error, ValueError):
    """The UART parity mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The UART parity mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class UARTDataBitNotSupportError(Error, ValueError):
    """The UART data bit mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The UART data bit mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class PAWLPortNotAvaliable(Error, ValueError):
    """The drive port is not available or is already occupied by another process."""
    def __init__(self, msg: str = 'The drive port is not available or is already occupied by another process.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class CANPortNotAvaliableError(Error, ValueError):
    """The CAN port is not available or is already occupied by another process."""
    def __init__(self, msg: str = 'The CAN port is not available or is already occupied by another process.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class CANSpeedNotVaildError(Error, ValueError):
    """The CAN speed mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The CAN speed mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class CANDataLengthNotVaildError(Error, ValueError):
    """The length of the specified CAN data is invalid."""
    def __init__(self, msg: str = 'The length of the specified CAN data is invalid.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class CANTXNotVaildError(Error, ValueError):
    """The CAN TX is not valid or is not recognized"""
    def __init__(self, msg: str = 'The CAN TX is not valid or is not recognized', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class CANTXPriorityNotVaildError(Error, ValueError):
    """The CAN TX priority is not valid or is not recognized."""
    def __init__(self, msg: str = 'The CAN TX priority is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class MotionAxisError(ZVRWarning, ValueError):
    """The motion axis is not valid or is not recognized."""
    def __init__(self, msg: str = 'The motion axis is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class MotionPortNotAvaliable(ZVRWarning, ValueError):
    """The motion port is not available or is already occupied by another process."""
    def __init__(self, msg: str = 'The motion port is not available or is already occupied by another process.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class MotionStopModeError(ZVRWarning, ValueError):
    """The motion stop mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The motion stop mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class MotionSearchTypeError(ZVRWarning, ValueError):
    """The motion search type is not valid or is not recognized."""
    def __init__(self, msg: str = 'The motion search type is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class MotionSearchDirectionError(ZVRWarning, ValueError):
    """The motion search direction is not valid or is not recognized."""
    def __init__(self, msg: str = 'The motion search direction is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class MotionEnableError(ZVRWarning, ValueError):
    """The motion enable is not valid or is not recognized."""
    def __init__(self, msg: str = 'The motion enable is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class MotionStepperOutputError(ZVRWarning, ValueError):
    """The motion stepper output is not valid or is not recognized."""
    def __init__(self, msg: str = 'The motion stepper output is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class MotionDirectionError(ZVRWarning, ValueError):
    """The motion direction is not valid or is not recognized."""
    def __init__(self, msg: str = 'The motion direction is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class MotionPolarityError(ZVRWarning, ValueError):
    """The motion polarity is not valid or is not recognized."""
    def __init__(self, msg: str = 'The motion polarity is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class MotionCaptureTypeError(ZVRWarning, ValueError):
    """The motion capture type is not valid or is not recognized."""
    def __init__(self, msg: str = 'The motion capture type is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class MotionCaptureModeError(ZVRWarning, ValueError):
    """The motion capture mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The motion capture mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class MotionBreakPointModeError(ZVRWarning, ValueError):
    """The motion breakpoint mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The motion breakpoint mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class MotionOperationModeError(ZVRWarning, ValueError):
    """The motion operation mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The motion operation mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class MotionAccelerationModeError(ZVRWarning, ValueError):
    """The motion acceleration mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The motion acceleration mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class LatticePortNotAvaliableError(Error, ValueError):
    """The Lattice slot is not available or is already occupied by another process."""
    def __init__(self, msg: str = 'The Lattice slot is not available or is already occupied by another process.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class DPOTPortNotAvaliableError(Error, ValueError):
    """The DPOT port is not available or is already occupied by another process."""
    def __init__(self, msg: str = 'The DPOT port is not available or is already occupied by another process.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class DPOTChannelNotAvaliableError(Error, ValueError):
    """The DPOT channel is not available."""
    def __init__(self, msg: str = 'The DPOT channel is not available.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FlightModeNotAvaliableError(Error, ValueError):
    """The Drone flight mode is not valid or is not recognized."""
    def __init__(self, msg: str = 'The Drone flight mode is not valid or is not recognized.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class HeightNotAvaliableError(Error, ValueError):
    """Input value is out of the allowed range (-8 to 0) m."""
    def __init__(self, msg: str = 'Input value is out of the allowed range (-8 to 0) m.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class AngleNotAvaliableError(Error, ValueError):
    """Input value is out of the allowed range (-15 to 15) degree."""
    def __init__(self, msg: str = 'Input value is out of the allowed range (-15 to 15) degree.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareEnableError(Error):
    """The functionality is not enabled in the firmware"""
    def __init__(self, msg: str = 'The functionality is not enabled in the firmware', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwarePinIndexError(Error):
    """The pin index error in the firmware."""
    def __init__(self, msg: str = 'The pin index error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareHALIndexError(Error):
    """The HAL handle index error in the firmware."""
    def __init__(self, msg: str = 'The HAL handle index error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareZVRIndexError(Error):
    """The HAL error in the firmware."""
    def __init__(self, msg: str = 'The HAL error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareRTCError(Error):
    """The RTC error in the firmware."""
    def __init__(self, msg: str = 'The RTC error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareI2CError(Error):
    """The I2C error in the firmware."""
    def __init__(self, msg: str = 'The I2C error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareSPIError(Error):
    """The SPI error in the firmware."""
    def __init__(self, msg: str = 'The SPI error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareUARTError(Error):
    """The UART error in the firmware."""
    def __init__(self, msg: str = 'The UART error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareTIMError(Error):
    """The Time error in the firmware."""
    def __init__(self, msg: str = 'The Time error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwarePWMError(Error):
    """The PWM error in the firmware."""
    def __init__(self, msg: str = 'The PWM error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwarePulseError(Error):
    """The pulse counter error in the firmware."""
    def __init__(self, msg: str = 'The pulse counter error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareEncoderError(Error):
    """The encoder counter error in the firmware."""
    def __init__(self, msg: str = 'The encoder counter error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareEEPROMError(Error):
    """The EEPROM error in the firmware."""
    def __init__(self, msg: str = 'The EEPROM error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareOLEDError(Error):
    """The OLED error in the firmware."""
    def __init__(self, msg: str = 'The OLED error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareCoreError(Error):
    """The Core error in the firmware."""
    def __init__(self, msg: str = 'The Core error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareDIOError(Error):
    """The DIO error in the firmware."""
    def __init__(self, msg: str = 'The DIO error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareRelayError(Error):
    """The relay error in the firmware."""
    def __init__(self, msg: str = 'The relay error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareAIError(Error):
    """The AI error in the firmware."""
    def __init__(self, msg: str = 'The AI error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareAOError(Error):
    """The AO error in the firmware."""
    def __init__(self, msg: str = 'The AO error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareMotionError(Error):
    """The motion error in the firmware."""
    def __init__(self, msg: str = 'The motion error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareDriveError(Error):
    """The drive error in the firmware."""
    def __init__(self, msg: str = 'The drive error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareThermalError(Error):
    """The thermal error in the firmware."""
    def __init__(self, msg: str = 'The thermal error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareCANError(Error):
    """The CAN error in the firmware."""
    def __init__(self, msg: str = 'The CAN error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareUSBError(Error):
    """The USB read/write error in the firmware."""
    def __init__(self, msg: str = 'The USB read/write error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareTCPError(Error):
    """The TCP read/write error in the firmware."""
    def __init__(self, msg: str = 'The TCP read/write error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareUDPError(Error):
    """The UDP read/write error in the firmware."""
    def __init__(self, msg: str = 'The UDP read/write error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareBootloaderError(Error):
    """The bootloader error in the firmware."""
    def __init__(self, msg: str = 'The bootloader error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareParserError(Error):
    """The parser error in the firmware."""
    def __init__(self, msg: str = 'The parser error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class FirmwareOtherError(Error):
    """The other error in the firmware."""
    def __init__(self, msg: str = 'The other error in the firmware.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
        """

class ExtLibNotFoundWarning(ZVRWarning):
    """External library "libusb-1.0.dll" not found at indicated path will look at the default path instead"""
    def __init__(self, msg: str = 'External library "libusb-1.0.dll" not found at indicated path will look at the default path instead', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class AIQueueOverflowWarning(ZVRWarning):
    """Occurrence AI queue overflow."""
    def __init__(self, msg: str = 'Occurrence AI queue overflow.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class UARTQueueOverflowWarning(ZVRWarning):
    """Occurrence UART queue overflow."""
    def __init__(self, msg: str = 'Occurrence UART queue overflow.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class CANQueueOverflowWarning(ZVRWarning):
    """Occurrence CAN queue overflow."""
    def __init__(self, msg: str = 'Occurrence CAN queue overflow.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class AHRSQueueOverflowWarning(ZVRWarning):
    """Occurrence AHRS queue overflow."""
    def __init__(self, msg: str = 'Occurrence AHRS queue overflow.', *args: object, **kwargs: object) -> None:
        """Sets the message.

        Args:
            msg: text instead of the default.
            *args: ignored.
            **kwargs: silent=True makes the construction report nothing.
        """

class Gate:
    """Gate of a receive thread, with the interface of a lock: shut by acquire, opened by release. A new one is open. No call waits for a shut gate for ever, and opening an open one does nothing."""
    def acquire(self, blocking: bool = True, timeout: float = -1) -> bool:
        """Shuts the gate.

        Args:
            blocking: whether to succeed even if it is shut already; such a call never waits.
            timeout: seconds to wait for a shut gate to open; -1 for no wait.
        """
    def release(self) -> None:
        """Opens the gate."""
    def locked(self) -> bool:
        """Whether the gate is shut."""
    def __enter__(self) -> bool:
        """Shuts the gate."""
    def __exit__(self, *failure: object) -> None:
        """Opens the gate."""
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""

class Fifo:
    """Thread-safe queue of frames or any objects."""
    def put(self, item: Any, block: bool = True, timeout: float | None = None) -> None:
        """Adds an item.

        Args:
            item: data of a frame as bytes, or anything else; None is the marker that wakes a reader.
            block: whether to wait.
            timeout: seconds to wait at most; None for no limit.
        """
    def get(self, block: bool = True, timeout: float | None = None) -> Any:
        """Takes the oldest item.

        Args:
            block: whether to wait.
            timeout: seconds to wait at most; None for no limit.
        """
    def put_nowait(self, item: Any) -> None:
        """Adds an item without waiting.

        Args:
            item: data of a frame as bytes, or anything else; None is the marker that wakes a reader.
        """
    def get_nowait(self) -> Any:
        """Takes the oldest item without waiting."""
    def qsize(self) -> int:
        """Number of items."""
    def empty(self) -> bool:
        """Whether it is empty."""
    def full(self) -> bool:
        """Whether it is full."""
    def task_done(self) -> None:
        """Declares a taken item done."""
    def join(self) -> None:
        """Waits until every item that was put has been declared done."""
    def __repr__(self) -> str:
        """Shows its capacity and size."""
    @property
    def unfinished_tasks(self) -> int:
        """Items not yet declared done."""
    @property
    def maxsize(self) -> int:
        """Most items it holds; 0 for no limit."""
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""
    def __init__(self, maxsize: int = 0) -> None: ...

class ItemFifo:
    """Thread-safe queue of any objects."""
    def put(self, item: Any, block: bool = True, timeout: float | None = None) -> None:
        """Adds an item.

        Args:
            item: any object; None is the marker that wakes a reader.
            block: whether to wait.
            timeout: seconds to wait at most; None for no limit.
        """
    def get(self, block: bool = True, timeout: float | None = None) -> Any:
        """Takes the oldest item.

        Args:
            block: whether to wait.
            timeout: seconds to wait at most; None for no limit.
        """
    def put_nowait(self, item: Any) -> None:
        """Adds an item without waiting.

        Args:
            item: any object; None is the marker that wakes a reader.
        """
    def get_nowait(self) -> Any:
        """Takes the oldest item without waiting."""
    def qsize(self) -> int:
        """Number of items."""
    def empty(self) -> bool:
        """Whether it is empty."""
    def full(self) -> bool:
        """Whether it is full."""
    def task_done(self) -> None:
        """Declares a taken item done."""
    def join(self) -> None:
        """Waits until every item that was put has been declared done."""
    def __repr__(self) -> str:
        """Shows its capacity and size."""
    @property
    def unfinished_tasks(self) -> int:
        """Items not yet declared done."""
    @property
    def maxsize(self) -> int:
        """Most items it holds; 0 for no limit."""
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""
    def __init__(self, maxsize: int = 0) -> None: ...

class EchoPool(MutableMapping[Any, Any]):
    """Latest unclaimed reply per command code or composite motion key."""
    def __getitem__(self, key: Any) -> Any:
        """The reply, which stays.

        Args:
            key: key of the pool.
        """
    def __setitem__(self, key: Any, value: Any) -> None:
        """Files a reply and notifies its waiters.

        Args:
            key: key of the pool.
            value: data of the reply as bytes, or any object.
        """
    def __delitem__(self, key: Any) -> None:
        """Drops a reply.

        Args:
            key: key of the pool.
        """
    def __contains__(self, key: object) -> bool:
        """Whether a reply is there.

        Args:
            key: the key or item to look for.
        """
    def __len__(self) -> int:
        """Number of replies."""
    def __iter__(self) -> Iterator[Any]:
        """Iterates over the keys that are there now."""
    def copy(self) -> dict[Any, Any]:
        """Returns a plain dictionary of the current entries."""
    def __or__(self, other: Any) -> dict[Any, Any]:
        """Returns a plain dictionary of both.

        Args:
            other: the mapping to merge with.
        """
    def __ror__(self, other: Any) -> dict[Any, Any]:
        """Returns a plain dictionary of both.

        Args:
            other: the mapping to merge with.
        """
    def __ior__(self, other: Any) -> Self:
        """Adds the entries of the other mapping.

        Args:
            other: the mapping to merge with.
        """
    def __repr__(self) -> str:
        """Its content."""
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""
    def popitem(self) -> tuple[Any, Any]:
        """Removes and returns the newest entry."""
    def __reversed__(self) -> Iterator[Any]:
        """Iterates over the keys from the newest on."""

class StreamPool(MutableMapping[Any, Any]):
    """Queue of streamed frames per command, or per tuple of command, port and chip select. A missing key creates an empty queue."""
    def __getitem__(self, key: Any) -> Any:
        """Returns the entry of a key; created if missing.

        Args:
            key: key of the pool.
        """
    def __setitem__(self, key: Any, value: Any) -> None:
        """Replaces an entry.

        Args:
            key: key of the pool.
            value: a Fifo, or a replacement that is used through its methods.
        """
    def __delitem__(self, key: Any) -> None:
        """Removes an entry; the next frame creates another.

        Args:
            key: key of the pool.
        """
    def __contains__(self, key: object) -> bool:
        """Whether there is such an entry.

        Args:
            key: the key or item to look for.
        """
    def __len__(self) -> int:
        """Number of entries."""
    def __iter__(self) -> Iterator[Any]:
        """Iterates over the keys that are there now."""
    def copy(self) -> dict[Any, Any]:
        """Returns a plain dictionary of the current entries."""
    def __or__(self, other: Any) -> dict[Any, Any]:
        """Returns a plain dictionary of both.

        Args:
            other: the mapping to merge with.
        """
    def __ror__(self, other: Any) -> dict[Any, Any]:
        """Returns a plain dictionary of both.

        Args:
            other: the mapping to merge with.
        """
    def __ior__(self, other: Any) -> Self:
        """Adds the entries of the other mapping.

        Args:
            other: the mapping to merge with.
        """
    def __repr__(self) -> str:
        """Its content."""
    def get(self, key: Any, default: Any = None) -> Any:
        """Returns the entry of a key, without creating one.

        Args:
            key: key of the pool.
            default: returned if there is none.
        """
    def pop(self, key: Any, *args: Any) -> Any:
        """Removes and returns an entry.

        Args:
            key: key of the pool.
            *args: returned if there is none.
        """
    def setdefault(self, key: Any, default: Any = None) -> Any:
        """Returns the entry of a key, or else adds the default and returns it.

        Args:
            key: key of the pool.
            default: returned if there is none.
        """
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""
    def popitem(self) -> tuple[Any, Any]:
        """Removes and returns the newest entry."""
    def __reversed__(self) -> Iterator[Any]:
        """Iterates over the keys from the newest on."""

class RecordSet(MutableSet[bytes]):
    """Replies to one broadcast command, without duplicates."""
    def __contains__(self, key: object) -> bool:
        """Whether a reply is there.

        Args:
            key: the key or item to look for.
        """
    def __iter__(self) -> Iterator[bytes]:
        """Iterates over the replies that are there now."""
    def __len__(self) -> int:
        """Number of different replies."""
    def add(self, value: bytes) -> None:
        """Adds a reply.

        Args:
            value: data of a reply.
        """
    def discard(self, value: bytes) -> None:
        """Removes a reply if it is there.

        Args:
            value: data of a reply.
        """
    def clear(self) -> None:
        """Removes all replies."""
    def copy(self) -> set[bytes]:
        """Returns a plain set of the current replies."""
    def __repr__(self) -> str:
        """Its content."""
    def union(self, *args: Any) -> Any:
        """As on a plain set of the current replies.

        Args:
            *args: sets or other collections.
        """
    def intersection(self, *args: Any) -> Any:
        """As on a plain set of the current replies.

        Args:
            *args: sets or other collections.
        """
    def difference(self, *args: Any) -> Any:
        """As on a plain set of the current replies.

        Args:
            *args: sets or other collections.
        """
    def symmetric_difference(self, *args: Any) -> Any:
        """As on a plain set of the current replies.

        Args:
            *args: sets or other collections.
        """
    def __or__(self, *args: Any) -> Any:
        """As on a plain set of the current replies.

        Args:
            *args: sets or other collections.
        """
    def __and__(self, *args: Any) -> Any:
        """As on a plain set of the current replies.

        Args:
            *args: sets or other collections.
        """
    def __sub__(self, *args: Any) -> Any:
        """As on a plain set of the current replies.

        Args:
            *args: sets or other collections.
        """
    def __xor__(self, *args: Any) -> Any:
        """As on a plain set of the current replies.

        Args:
            *args: sets or other collections.
        """
    def __ror__(self, *args: Any) -> Any:
        """As on a plain set of the current replies.

        Args:
            *args: sets or other collections.
        """
    def __rand__(self, *args: Any) -> Any:
        """As on a plain set of the current replies.

        Args:
            *args: sets or other collections.
        """
    def __rsub__(self, *args: Any) -> Any:
        """As on a plain set of the current replies.

        Args:
            *args: sets or other collections.
        """
    def __rxor__(self, *args: Any) -> Any:
        """As on a plain set of the current replies.

        Args:
            *args: sets or other collections.
        """
    def issubset(self, *args: Any) -> Any:
        """As on a plain set of the current replies.

        Args:
            *args: sets or other collections.
        """
    def issuperset(self, *args: Any) -> Any:
        """As on a plain set of the current replies.

        Args:
            *args: sets or other collections.
        """
    def update(self, *args: Any) -> Any:
        """As on a plain set.

        Args:
            *args: sets or other collections.
        """
    def intersection_update(self, *args: Any) -> Any:
        """As on a plain set.

        Args:
            *args: sets or other collections.
        """
    def difference_update(self, *args: Any) -> Any:
        """As on a plain set.

        Args:
            *args: sets or other collections.
        """
    def symmetric_difference_update(self, *args: Any) -> Any:
        """As on a plain set.

        Args:
            *args: sets or other collections.
        """
    def __ior__(self, *args: Any) -> Any:
        """As on a plain set.

        Args:
            *args: sets or other collections.
        """
    def __iand__(self, *args: Any) -> Any:
        """As on a plain set.

        Args:
            *args: sets or other collections.
        """
    def __isub__(self, *args: Any) -> Any:
        """As on a plain set.

        Args:
            *args: sets or other collections.
        """
    def __ixor__(self, *args: Any) -> Any:
        """As on a plain set.

        Args:
            *args: sets or other collections.
        """
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""

class BroadcastPool(MutableMapping[Any, Any]):
    """Set of replies per broadcast command. A missing key creates an empty set."""
    def __getitem__(self, key: Any) -> Any:
        """Returns the entry of a key; created if missing.

        Args:
            key: key of the pool.
        """
    def __setitem__(self, key: Any, value: Any) -> None:
        """Replaces an entry.

        Args:
            key: key of the pool.
            value: a RecordSet, or a replacement that is used through its methods.
        """
    def __delitem__(self, key: Any) -> None:
        """Removes an entry; the next frame creates another.

        Args:
            key: key of the pool.
        """
    def __contains__(self, key: object) -> bool:
        """Whether there is such an entry.

        Args:
            key: the key or item to look for.
        """
    def __len__(self) -> int:
        """Number of entries."""
    def __iter__(self) -> Iterator[Any]:
        """Iterates over the keys that are there now."""
    def copy(self) -> dict[Any, Any]:
        """Returns a plain dictionary of the current entries."""
    def __or__(self, other: Any) -> dict[Any, Any]:
        """Returns a plain dictionary of both.

        Args:
            other: the mapping to merge with.
        """
    def __ror__(self, other: Any) -> dict[Any, Any]:
        """Returns a plain dictionary of both.

        Args:
            other: the mapping to merge with.
        """
    def __ior__(self, other: Any) -> Self:
        """Adds the entries of the other mapping.

        Args:
            other: the mapping to merge with.
        """
    def __repr__(self) -> str:
        """Its content."""
    def get(self, key: Any, default: Any = None) -> Any:
        """Returns the entry of a key, without creating one.

        Args:
            key: key of the pool.
            default: returned if there is none.
        """
    def pop(self, key: Any, *args: Any) -> Any:
        """Removes and returns an entry.

        Args:
            key: key of the pool.
            *args: returned if there is none.
        """
    def setdefault(self, key: Any, default: Any = None) -> Any:
        """Returns the entry of a key, or else adds the default and returns it.

        Args:
            key: key of the pool.
            default: returned if there is none.
        """
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""
    def popitem(self) -> tuple[Any, Any]:
        """Removes and returns the newest entry."""
    def __reversed__(self) -> Iterator[Any]:
        """Iterates over the keys from the newest on."""

class RowFifo:
    """Thread-safe queue of a stream's items, kept in compact form: rows of samples, bytes, or frames."""
    def put(self, item: Any, block: bool = True, timeout: float | None = None) -> None:
        """Adds an item.

        Args:
            item: a row of samples as a list of floats, a byte as an integer, a CANFrame, or any object.
            block: whether to wait.
            timeout: seconds to wait at most; None for no limit.
        """
    def get(self, block: bool = True, timeout: float | None = None) -> Any:
        """Takes the oldest item.

        Args:
            block: whether to wait.
            timeout: seconds to wait at most; None for no limit.
        """
    def put_nowait(self, item: Any) -> None:
        """Adds an item without waiting.

        Args:
            item: a row of samples as a list of floats, a byte as an integer, a CANFrame, or any object.
        """
    def get_nowait(self) -> Any:
        """Takes the oldest item without waiting."""
    def qsize(self) -> int:
        """Number of items."""
    def empty(self) -> bool:
        """Whether it is empty."""
    def full(self) -> bool:
        """Whether it is full."""
    def task_done(self) -> None:
        """Declares a taken item done."""
    def join(self) -> None:
        """Waits until every item that was put has been declared done."""
    def __repr__(self) -> str:
        """Shows its capacity and size."""
    @property
    def unfinished_tasks(self) -> int:
        """Items not yet declared done."""
    @property
    def maxsize(self) -> int:
        """Most items it holds; 0 for no limit."""
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""
    def get_many(self, count: int) -> list[Any]:
        """Takes the oldest items without waiting.

        Args:
            count: most items to take.
        """
    @property
    def dropped(self) -> int:
        """Items of the stream dropped for lack of room since the queue was made."""
    def __init__(self, maxsize: int = 1000000) -> None: ...

class Packet_based:
    """Shared by both forms of the request engine."""
    def _preparePacket(self, cmd: int, data_out: Sequence[int] = []) -> list[int]:
        """Builds a frame.

        Args:
            cmd: command code.
            data_out: byte values of the request's data.
        """
    def _getAllUSBDevices(self) -> list[list[str]]:
        """Finds the attached USB devices."""

class Packet(Packet_based):
    """The request engine, blocking."""
    def _echoPacket(self, cmd: int, data_out: Sequence[int], timeout: float) -> bytes:
        """Sends a request once and waits for its reply.

        Args:
            cmd: command code.
            data_out: byte values of the request's data.
            timeout: seconds.
        """
    def _echoPacketWithRetry(self, cmd: int, data_out: Sequence[int], timeout: float = 5) -> bytes:
        """Sends a request, up to three times in quick succession, and waits for its reply.

        Args:
            cmd: command code.
            data_out: byte values of the request's data.
            timeout: seconds.
        """
    def _getReplyFromPool(self, cmd: int, timeout: float) -> bytes:
        """Waits for a reply and takes it from the echo pool.

        Args:
            cmd: key of the echo pool.
            timeout: seconds.
        """
    def _getStreamingFromPool(self, queue_: Fifo, num_samples: int, delay: float) -> list:
        """Takes items from a queue.

        Args:
            queue_: queue of samples.
            num_samples: most items to take; -1 for all.
            delay: seconds to wait once if there are fewer items.
        """
    def _sendPacketWithoutReply(self, cmd: int, data_out: Sequence[int]) -> None:
        """Sends a request that has no reply.

        Args:
            cmd: command code.
            data_out: byte values of the request's data.
        """
    def _broadcastPacket(self, cmd: int, data_out: Sequence[int]) -> RecordSet:
        """Sends a request to every device on the network and collects the replies for 5 seconds.

        Args:
            cmd: command code.
            data_out: byte values of the request's data.
        """

class Packet_async(Packet_based):
    """The request engine, awaitable."""
    async def _echoPacket_async(self, cmd: int, data_out: Sequence[int], timeout: float = 5) -> bytes | None:
        """Sends a request once and waits for its reply.

        Args:
            cmd: command code.
            data_out: byte values of the request's data.
            timeout: seconds.
        """
    async def _echoPacketWithRetry_async(self, cmd: int, data_out: Sequence[int], num_retries: int = 3, timeout: float = 5) -> bytes:
        """Sends a request until its reply arrives.

        Args:
            cmd: command code.
            data_out: byte values of the request's data.
            num_retries: times to send, one second apart.
            timeout: seconds.
        """
    async def _getReplyFromPool_async(self, cmd: int) -> bytes:
        """Waits for a reply, without a limit, and takes it from the echo pool.

        Args:
            cmd: key of the echo pool.
        """
    async def _getStreamingFromPool_async(self, queue_: Fifo, num_samples: int, delay: float) -> list:
        """Takes items from a queue; never waits.

        Args:
            queue_: queue of samples.
            num_samples: most items to take; -1 for all.
            delay: seconds to wait once if there are fewer items.
        """
    async def _sendPacketWithoutReply_async(self, cmd: int, data_out: Sequence[int]) -> None:
        """Sends a request that has no reply.

        Args:
            cmd: command code.
            data_out: byte values of the request's data.
        """
    async def _broadcastPacket_async(self, cmd: int, data_out: Sequence[int]) -> RecordSet:
        """Sends a request to every device on the network and collects the replies for 5 seconds.

        Args:
            cmd: command code.
            data_out: byte values of the request's data.
        """

class USBLibrary:
    """A loaded libusb-1.0."""
    @property
    def path(self) -> str:
        """Where it was found."""
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""

class USBError(OSError):
    """An error of the USB layer, with the system's error number."""

class USBTimeoutError(USBError):
    """A USB transfer timed out."""

class Socket:
    """The socket or serial line of a client; made by its connect or bind."""
    @property
    def family(self) -> socket.AddressFamily:
        """Its address family."""
    @property
    def type(self) -> socket.SocketKind:
        """Stream or datagram."""
    @property
    def timeout(self) -> float | None:
        """Seconds that a read or a send waits; None for no limit."""
    def gettimeout(self) -> float | None:
        """Seconds that a read or a send waits; None for no limit."""
    def settimeout(self, value: float | None) -> None:
        """Sets how long a read or a send waits.

        Args:
            value: seconds of later reads and sends; None for no limit.
        """
    def fileno(self) -> int:
        """The descriptor; -1 once it is closed."""
    def getsockname(self) -> tuple[str, int]:
        """Address and port of this end."""
    def getpeername(self) -> tuple[str, int]:
        """Address and port of the other end."""
    def recv(self, bufsize: int) -> bytes:
        """Reads once.

        Args:
            bufsize: most bytes to read.
        """
    def send(self, data: Sequence[int]) -> int:
        """Sends what there is room for.

        Args:
            data: byte values.
        """
    def sendall(self, data: Sequence[int]) -> None:
        """Sends all bytes.

        Args:
            data: byte values.
        """
    def getsockopt(self, level: int, optname: int, buflen: int = 0) -> int | bytes:
        """Reads an option.

        Args:
            level: level of the option.
            optname: number of the option.
            buflen: bytes of the value; 0 for a number.
        """
    def setsockopt(self, level: int, optname: int, value: int | bytes) -> None:
        """Sets an option.

        Args:
            level: level of the option.
            optname: number of the option.
            value: the new value.
        """
    def shutdown(self, how: int) -> None:
        """Ends the reads or the sends of all threads.

        Args:
            how: 0 for reads, 1 for sends, 2 for both.
        """
    def close(self) -> None:
        """Closes it, as soon as no other thread is inside one of its calls."""
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""

class Client:
    """A link to a device: bytes in, frames out. By itself it has no link; a subclass provides one with methods of its own."""
    stream: bytes
    """Everything received and not yet consumed."""
    last_index: int
    """Offset in `stream` at which the next search for a trailer starts."""
    def _splitPacket(self) -> list[tuple[int, bytes]]:
        """Consumes the complete frames of `stream`."""
    def sendPacket(self, int_list: Sequence[int]) -> None:
        """Sends a frame.

        Args:
            int_list: byte values of a frame.
        """
    def recvPacket(self, length: int) -> bytes:
        """Reads once, with the link's read timeout.

        Args:
            length: most bytes to read.
        """
    def recvAndSplitPacket(self, length: int) -> list[tuple[int, bytes]]:
        """Reads once and consumes the complete frames.

        Args:
            length: most bytes to read.
        """
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""

class NetworkClient(Client):
    """A client over a socket."""
    socket: Socket | int
    """The socket; 0 while there is none. It may be replaced by any object with the methods of a socket."""
    def setTimeout(self, timeout: float | None) -> None:
        """Sets the socket's timeout; does nothing while there is no socket.

        Args:
            timeout: timeout of later reads and sends in seconds; None for no limit.
        """
    def disconnect(self) -> None:
        """Shuts the socket down and releases it."""
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""

class TCPClient(NetworkClient):
    """A client over TCP."""
    def connect(self, ip_addr: str, port: int) -> bool:
        """Connects within 5 seconds.

        Args:
            ip_addr: IPv4 address or host name of the device.
            port: TCP port, 0 to 65535.
        """
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""

class UDPClient(NetworkClient):
    """A client that receives and broadcasts datagrams."""
    def bind(self, ip_addr: str, port: int) -> None:
        """Binds a local port.

        Args:
            ip_addr: local IPv4 address; empty for every interface.
            port: UDP port, 0 to 65535.
        """
    def sendBcstPacket(self, packet: Sequence[int]) -> None:
        """Sends a frame to every device, on every interface that can send it.

        Args:
            packet: byte values of a frame.
        """
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""

class UARTClient(Client):
    """A client over a serial line."""
    socket: Socket | int
    """The open line; 0 while there is none. It may be replaced by any object with read, write and close."""
    read_timeout: float
    """Read timeout in seconds."""
    client: object
    """Not used."""
    def connect(self, port: str, baudrate: int) -> bool:
        """Opens the port: 8 data bits, no parity, one stop bit.

        Args:
            port: name of the port, "COM4" or "/dev/ttyUSB0".
            baudrate: speed in bits per second.
        """
    def disconnect(self) -> bool:
        """Closes the port."""
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""

class USBDeviceIdentity:
    """Where a USB device is attached, and how it identifies itself."""
    @property
    def bus(self) -> int:
        """Number of the bus."""
    @property
    def address(self) -> int:
        """Address on the bus."""
    @property
    def serial_number(self) -> str:
        """Its serial number."""
    @property
    def product(self) -> str:
        """Name of the product."""
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""

class USBClient(Client):
    """A client over the bulk endpoints of a USB device: USBClient(serial_num="default")."""
    @property
    def device(self) -> USBDeviceIdentity:
        """The device."""
    @property
    def config(self) -> int:
        """Value of the device's first configuration."""
    @property
    def interface(self) -> int:
        """Number of that configuration's first interface."""
    @property
    def ep_in(self) -> int:
        """Address of the endpoint that is read."""
    @property
    def ep_out(self) -> int:
        """Address of the endpoint that is written."""
    def takeSerialNumber(self) -> str:
        """The device's serial number."""
    def takeProductName(self) -> str:
        """The product's name."""
    def recvPacket(self, length: int) -> bytes:
        """Reads once, for a millisecond at most.

        Args:
            length: most bytes to read.
        """
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""
    def __init__(self, serial_num: str = 'default') -> None: ...

class DeviceThread:
    """A thread of a device object: it receives frames, or decodes them to samples."""
    @property
    def name(self) -> str:
        """Name of the thread."""
    @property
    def daemon(self) -> bool:
        """True: the thread does not keep the program from ending."""
    @property
    def ident(self) -> int:
        """Number of the thread, as threading.get_ident gives it."""
    @property
    def native_id(self) -> int:
        """The system's number of the thread."""
    def is_alive(self) -> bool:
        """Whether the thread runs."""
    def join(self, timeout: float | None = None) -> None:
        """Waits until the thread has ended.

        Args:
            timeout: seconds to wait at most; None for no limit.
        """
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""

class Device:
    """Root of the device classes: the data pools and closing."""
    killed: bool
    data_pool_echo: EchoPool
    data_pool_strm: StreamPool
    data_pool_bcst: BroadcastPool
    serialize: bool
    def onConnectionLost(self, callback: Callable[[Exception], object], loop: asyncio.AbstractEventLoop | None = None) -> None:
        """Registers a function that is called once when the device or the system has ended the connection, or at once if it already has. Closing and disconnecting do not count.

        Args:
            callback: called with the reason, an error.
            loop: event loop to call it on; None for a thread of the library.
        """
    def __init__(self) -> None:
        """Makes the data pools."""
    def __setattr__(self, name: str, value: Any) -> None:
        """Sets an attribute and notifies the threads that use it.

        Args:
            name: name of the attribute.
            value: its new value.
        """
    def __delattr__(self, name: str) -> None:
        """Deletes an attribute and notifies the threads that use it.

        Args:
            name: name of the attribute.
        """
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: a connection cannot be copied."""
    def _checkCommandType(self, cmd: int, data: bytes) -> str:
        """Classifies a frame by its command.

        Args:
            cmd: command code of a received frame.
            data: its data.
        """
    def _putToDataPool(self, cmd: int, data: bytes) -> None:
        """Files a received frame in the pool of its class.

        Args:
            cmd: command code of a received frame.
            data: its data.
        """
    def _getDeviceName(self) -> str:
        """Returns the display name."""
    def close(self, verbose: bool = True) -> None:
        """Closes the object for good; a second call does nothing.

        Args:
            verbose: whether to print a line.
        """
    def __enter__(self) -> Self:
        """Returns the object itself."""
    def __exit__(self, *failure: object) -> None:
        """Closes the object. An exception of the block is still the one raised; one of closing becomes a note of it."""
    def __repr__(self) -> str:
        """Shows the model, the address, the serial number if known, and the state."""
    async def __aenter__(self) -> Self:
        """Returns the object itself."""
    async def __aexit__(self, *failure: object) -> None:
        """Closes the object as the end of a plain `with` does, without blocking the event loop."""

class NetworkDevice(Device):
    """A device behind one TCP connection."""
    ip_addr: str | None
    connect_status_cmd: bool
    recv_cmd_lock: Gate
    recv_cmd_thread: DeviceThread
    client_cmd: TCPClient | None
    def _recvCMDThread(self) -> None:
        """Body of the receive thread: reads and files frames until the object is closed."""
    def __init__(self, verbose: bool = True) -> None:
        """Starts the receive thread, which waits for a connection.

        Args:
            verbose: whether to print a line.
        """
    def connect(self, ip_addr: str = "192.168.1.110", port: int = 7, verbose: bool = True) -> None:
        """Connects to the device; does nothing if it is connected.

        Args:
            ip_addr: IPv4 address or host name.
            port: TCP port of the commands.
            verbose: whether to print a line.
        """
    def disconnect(self, verbose: bool = True) -> None:
        """Ends the connection; does nothing if there is none.

        Args:
            verbose: whether to print a line.
        """
    def isConnected(self) -> bool:
        """Whether there is a connection that has not been lost."""
    def reconnect(self, verbose: bool = True) -> None:
        """Connects the handle again to its last address, whatever the state of that connection. Unclaimed replies are dropped; nothing is configured or opened again on the device.

        Args:
            verbose: whether to print a line.
        """
    async def connect_async(self, ip_addr: str = "192.168.1.110", port: int = 7, verbose: bool = True) -> None:
        """Connects to the device; does nothing if it is connected.

        Args:
            ip_addr: IPv4 address or host name.
            port: TCP port of the commands.
            verbose: whether to print a line.
        """
    async def disconnect_async(self, verbose: bool = True) -> None:
        """Ends the connection; does nothing if there is none.

        Args:
            verbose: whether to print a line.
        """
    async def reconnect_async(self, verbose: bool = True) -> None:
        """Connects the handle again to its last address.

        Args:
            verbose: whether to print a line.
        """
    async def close_async(self, verbose: bool = True) -> None:
        """Closes connection and threads for good; a second call does nothing.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection and threads for good; a second call does nothing.

        Args:
            verbose: whether to print a line.
        """

class ETHDevice(NetworkDevice):
    """An Ethernet device."""

class WifiDevice(NetworkDevice):
    """A Wi-Fi device: one TCP connection for commands, one for streamed data."""
    connect_status_data: bool
    recv_data_lock: Gate
    recv_data_thread: DeviceThread
    client_data: TCPClient | None
    def _recvDataThread(self) -> None:
        """Body of the receive thread: reads and files frames until the object is closed."""
    def __init__(self, verbose: bool = True) -> None:
        """Starts the receive threads, which wait for a connection.

        Args:
            verbose: whether to print a line.
        """
    def connect(self, ip: str = "192.168.5.79", port1: int = 1336, port2: int = 7, verbose: bool = True) -> None:  # type: ignore[override]
        """Connects commands and data. A second call replaces the data connection.

        Args:
            ip: IPv4 address or host name.
            port1: TCP port of the streamed data.
            port2: TCP port of the commands.
            verbose: whether to print a line.
        """
    def disconnect(self, verbose: bool = True) -> None:
        """Ends both connections, if there are any.

        Args:
            verbose: whether to print a line.
        """
    def isConnected(self) -> bool:
        """Whether there is a connection that has not been lost."""
    def reconnect(self, verbose: bool = True) -> None:
        """Connects the handle again to its last address, whatever the state of that connection. Unclaimed replies are dropped; nothing is configured or opened again on the device.

        Args:
            verbose: whether to print a line.
        """
    async def connect_async(self, ip: str = "192.168.5.79", port1: int = 1336, port2: int = 7, verbose: bool = True) -> None:  # type: ignore[override]
        """Connects commands and data. A second call replaces the data connection.

        Args:
            ip: IPv4 address or host name.
            port1: TCP port of the streamed data.
            port2: TCP port of the commands.
            verbose: whether to print a line.
        """
    async def disconnect_async(self, verbose: bool = True) -> None:
        """Ends both connections, if there are any.

        Args:
            verbose: whether to print a line.
        """
    async def reconnect_async(self, verbose: bool = True) -> None:
        """Connects the handle again to its last address.

        Args:
            verbose: whether to print a line.
        """
    async def close_async(self, verbose: bool = True) -> None:
        """Closes connections and threads for good; a second call does nothing.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connections and threads for good; a second call does nothing.

        Args:
            verbose: whether to print a line.
        """

class USBDevice(Device):
    """A device on USB."""
    serial_num: str | None
    connect_status_cmd: bool
    recv_cmd_lock: Gate
    recv_cmd_thread: DeviceThread
    client_cmd: USBClient | None
    def _recvCMDThread(self) -> None:
        """Body of the receive thread: reads and files frames until the object is closed."""
    def __init__(self, verbose: bool = True) -> None:
        """Starts the receive thread, which waits for a connection.

        Args:
            verbose: whether to print a line.
        """
    def connect(self, serial_num: str = "default", verbose: bool = True) -> None:
        """Opens the device; does nothing if it is open.

        Args:
            serial_num: serial number of the device; "default" takes the first one.
            verbose: whether to print a line.
        """
    def disconnect(self, verbose: bool = True) -> None:
        """Releases the device; does nothing if it is not open.

        Args:
            verbose: whether to print a line.
        """
    def isConnected(self) -> bool:
        """Whether there is a connection that has not been lost."""
    def reconnect(self, verbose: bool = True) -> None:
        """Connects the handle again to its last address, whatever the state of that connection. Unclaimed replies are dropped; nothing is configured or opened again on the device.

        Args:
            verbose: whether to print a line.
        """
    async def connect_async(self, serial_num: str = "default", verbose: bool = True) -> None:
        """Opens the device; does nothing if it is open.

        Args:
            serial_num: serial number of the device; "default" takes the first one.
            verbose: whether to print a line.
        """
    async def disconnect_async(self, verbose: bool = True) -> None:
        """Releases the device; does nothing if it is not open.

        Args:
            verbose: whether to print a line.
        """
    async def reconnect_async(self, verbose: bool = True) -> None:
        """Connects the handle again to its last address.

        Args:
            verbose: whether to print a line.
        """
    async def close_async(self, verbose: bool = True) -> None:
        """Closes connection and thread for good; a second call does nothing.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection and thread for good; a second call does nothing.

        Args:
            verbose: whether to print a line.
        """

class UARTDevice(Device):
    """A device on a serial line."""
    port: str | None
    baudrate: int | None
    connect_status_cmd: bool
    recv_cmd_lock: Gate
    recv_cmd_thread: DeviceThread
    client_cmd: UARTClient | None
    def _recvCMDThread(self) -> None:
        """Body of the receive thread: reads and files frames until the object is closed."""
    def __init__(self, verbose: bool = True) -> None:
        """Starts the receive thread, which waits for a connection.

        Args:
            verbose: whether to print a line.
        """
    def connect(self, port: str = "COM4", baudrate: int = 91600, verbose: bool = True) -> None:
        """Opens the line; does nothing if it is open.

        Args:
            port: name of the serial port, "COM4" or "/dev/ttyUSB0".
            baudrate: speed in bits per second.
            verbose: whether to print a line.
        """
    def disconnect(self, verbose: bool = True) -> None:
        """Closes the line; does nothing if it is not open.

        Args:
            verbose: whether to print a line.
        """
    def isConnected(self) -> bool:
        """Whether there is a connection that has not been lost."""
    def reconnect(self, verbose: bool = True) -> None:
        """Connects the handle again to its last address, whatever the state of that connection. Unclaimed replies are dropped; nothing is configured or opened again on the device.

        Args:
            verbose: whether to print a line.
        """
    async def connect_async(self, port: str = "COM4", baudrate: int = 91600, verbose: bool = True) -> None:
        """Opens the line; does nothing if it is open.

        Args:
            port: name of the serial port, "COM4" or "/dev/ttyUSB0".
            baudrate: speed in bits per second.
            verbose: whether to print a line.
        """
    async def disconnect_async(self, verbose: bool = True) -> None:
        """Closes the line; does nothing if it is not open.

        Args:
            verbose: whether to print a line.
        """
    async def reconnect_async(self, verbose: bool = True) -> None:
        """Connects the handle again to its last address.

        Args:
            verbose: whether to print a line.
        """
    async def close_async(self, verbose: bool = True) -> None:
        """Closes line and thread for good; a second call does nothing.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes line and thread for good; a second call does nothing.

        Args:
            verbose: whether to print a line.
        """

class BroadcastModule(Packet):
    """Finding devices."""
    def Bcst_enumerateNetworkDevices(self) -> list[list[str]]:
        """Finds the devices on the network, within 5 seconds. Use the awaitable form (compatibility note 5)."""
    def Bcst_checkMACAndRing(self, mac_addr: str) -> bytes:
        """Makes one device ring.

        Args:
            mac_addr: MAC address of the device: six hexadecimal numbers with colons.
        """
    def Bcst_checkMACAndReboot(self, mac_addr: str) -> int:
        """Should restart one device, but fails for every address before anything is sent (compatibility note 6).

        Args:
            mac_addr: MAC address of the device: six hexadecimal numbers with colons.
        """
    def Bcst_checkMACAndSetIP(self, ip_addr: str, mac_addr: str, gateway: str, subnet_mask: str = "255.255.255.0") -> int:
        """Sets the address of one device. Equal answers count as one, so a single device leads to the error (compatibility note 7).

        Args:
            ip_addr: new dotted IPv4 address of the device.
            mac_addr: MAC address of the device: six hexadecimal numbers with colons.
            gateway: dotted address of the gateway.
            subnet_mask: dotted subnet mask.
        """
    def Bcst_enumerateUSBDevices(self) -> list[list[str]]:
        """Finds the devices on USB."""

class BroadcastModule_async(Packet_async):
    """Finding devices."""
    async def Bcst_enumerateNetworkDevices_async(self) -> list[list[str]]:
        """Finds the devices on the network, within 5 seconds. Use the awaitable form (compatibility note 5)."""
    async def Bcst_checkMACAndRing_async(self, mac_addr: str) -> bytes:
        """Makes one device ring.

        Args:
            mac_addr: MAC address of the device: six hexadecimal numbers with colons.
        """
    async def Bcst_checkMACAndReboot_async(self, mac_addr: str) -> int:
        """Should restart one device, but fails for every address before anything is sent (compatibility note 6).

        Args:
            mac_addr: MAC address of the device: six hexadecimal numbers with colons.
        """
    async def Bcst_checkMACAndSetIP_async(self, ip_addr: str, mac_addr: str, gateway: str, subnet_mask: str = "255.255.255.0") -> int:
        """Sets the address of one device. Equal answers count as one, so a single device leads to the error (compatibility note 7).

        Args:
            ip_addr: new dotted IPv4 address of the device.
            mac_addr: MAC address of the device: six hexadecimal numbers with colons.
            gateway: dotted address of the gateway.
            subnet_mask: dotted subnet mask.
        """
    def Bcst_enumerateUSBDevices(self) -> list[list[str]]:
        """Finds the devices on USB."""

class BroadcastDevice(Device):
    """Sends requests to all devices on the network at once."""
    connect_status_udp: bool
    recv_udp_lock: Gate
    recv_udp_thread: DeviceThread
    client_udp: UDPClient | None
    def _recvUDPThread(self) -> None:
        """Body of the receive thread: reads and files frames until the object is closed."""
    def __init__(self, verbose: bool = True) -> None:
        """Starts the receive thread, which waits for a port.

        Args:
            verbose: whether to print a line.
        """
    def connect(self, verbose: bool = True) -> None:
        """Binds UDP port 6667, on which the devices answer; does nothing if it is bound.

        Args:
            verbose: whether to print a line.
        """
    def disconnect(self, verbose: bool = True) -> None:
        """Releases the port; does nothing if it is not bound.

        Args:
            verbose: whether to print a line.
        """
    def isConnected(self) -> bool:
        """Whether there is a connection that has not been lost."""
    def reconnect(self, verbose: bool = True) -> None:
        """Connects the handle again to its last address, whatever the state of that connection. Unclaimed replies are dropped; nothing is configured or opened again on the device.

        Args:
            verbose: whether to print a line.
        """
    async def connect_async(self, verbose: bool = True) -> None:
        """Binds UDP port 6667, on which the devices answer; does nothing if it is bound.

        Args:
            verbose: whether to print a line.
        """
    async def disconnect_async(self, verbose: bool = True) -> None:
        """Releases the port; does nothing if it is not bound.

        Args:
            verbose: whether to print a line.
        """
    async def reconnect_async(self, verbose: bool = True) -> None:
        """Connects the handle again to its last address.

        Args:
            verbose: whether to print a line.
        """
    async def close_async(self, verbose: bool = True) -> None:
        """Closes port and thread for good; a second call does nothing.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes port and thread for good; a second call does nothing.

        Args:
            verbose: whether to print a line.
        """

class SystemBased:
    """Identity, clock and reboot of every device, and the slots of the chassis."""
    serial_number: str
    rtc_time: str
    driver_info: str
    thread_info: str
    num_of_pins: int
    pin_mode_list: list[int]
    def _checkLatticeSlot(self, slot: int) -> None:
        """Raises LatticePortNotAvaliableError unless the slot is 1, 2 or 4.

        Args:
            slot: slot of the chassis: 1, 2 or 4.
        """

class SystemModule(Packet, SystemBased):
    """Identity, clock and reboot of every device, and the slots of the chassis."""
    def Sys_getDriverInfo(self, timeout: float = 3) -> list[str]:
        """Reads name and version of the device's driver.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _getDriverInfo_dev(self, mode: int, timeout: float = 3) -> str:
        """Reads driver information of a kind.

        Args:
            mode: mode number, 0 to 255.
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_getDeviceAlias(self, timeout: float = 3) -> str:
        """Reads the name that a user gave the device.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_setDeviceAlias(self, alias: str, timeout: float = 3) -> int:
        """Sets the device's name.

        Args:
            alias: the name, up to 16 characters.
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_getRTC(self, timeout: float = 3) -> str:
        """Reads the device's clock.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_startRTCAlarm(self, mode: int, day: int, hour: int, minute: int, second: int, timeout: float = 3) -> int:
        """Starts the clock's alarm.

        Args:
            mode: mode number, 0 to 255.
            day: day of the month.
            hour: hour, 0 to 23.
            minute: minute, 0 to 59.
            second: second, 0 to 59.
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_stopRTCAlarm(self, timeout: float = 3) -> int:
        """Stops the clock's alarm.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _Sys_getRTCAlarmState(self, timeout: float = 3) -> str:
        """Reads whether the alarm is on.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _Sys_getRTCAlarmConfig(self, timeout: float = 3) -> str:
        """Reads the alarm's time.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_getSerialNumber(self, timeout: float = 3) -> str:
        """Reads the serial number.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_reboot(self, timeout: float = 3) -> int:
        """Restarts the device.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _Sys_rebootOnBootloader(self, timeout: float = 3) -> int:
        """Restarts the device in its bootloader.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _getEEPROMPage(self, page_number: int, timeout: float = 3) -> list[int]:
        """Reads a page of the EEPROM.

        Args:
            page_number: page of the EEPROM, 0 to 255.
            timeout: seconds in which the device must answer, above 0.
        """
    def _setEEPROMPage(self, page_number: int, int_list: Sequence[int], timeout: float = 3) -> int:
        """Writes a page of the EEPROM.

        Args:
            page_number: page of the EEPROM, 0 to 255.
            int_list: byte values, 0 to 255.
            timeout: seconds in which the device must answer, above 0.
        """
    def _getEEPROMDevice(self, device_number: int, timeout: float = 3) -> list[int]:
        """Reads an EEPROM chip's identification.

        Args:
            device_number: number of the EEPROM chip, 0 to 255.
            timeout: seconds in which the device must answer, above 0.
        """
    def _setEEPROMByte(self, page_number: int, byte_index: int, value: int, timeout: float = 3) -> int:
        """Writes a byte of the EEPROM.

        Args:
            page_number: page of the EEPROM, 0 to 255.
            byte_index: byte of the page, 0 to 255.
            value: byte value, 0 to 255.
            timeout: seconds in which the device must answer, above 0.
        """
    def _setSerialNumber(self, serial_num: str, timeout: float = 3) -> int:
        """Sets the device's serial number.

        Args:
            serial_num: the serial number, up to 8 characters.
            timeout: seconds in which the device must answer, above 0.
        """
    def _resetFactory(self, timeout: float = 3) -> int:
        """Resets the device to its factory state.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _getThreads(self, timeout: float = 3) -> str:
        """Lists the firmware's threads.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_getPythonVersion(self, timeout: float = 3) -> str:
        """Returns the library's version; sends nothing.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_getPinModeInPort(self, port: int, timeout: float = 3) -> list[str]:
        """Reads what each pin of a port is used for.

        Args:
            port: port number, from 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_setRTC(self, year: int, month: int, day: int, hour: int, minute: int, second: int, timeout: float = 3) -> int:
        """Sets the device's clock.

        Args:
            year: year; below 100 it counts from 1900.
            month: month, 1 to 12.
            day: day of the month.
            hour: hour, 0 to 23.
            minute: minute, 0 to 59.
            second: second, 0 to 59.
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_getMode(self, slot: int, timeout: float = 3) -> str:
        """Reads the mode of a slot of the chassis.

        Args:
            slot: slot of the chassis: 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Sys_setSlotMode(self, slot: int, mode: int, timeout: float = 3) -> int:
        """Sets the mode of a slot of the chassis.

        Args:
            slot: slot of the chassis: 1, 2 or 4.
            mode: mode number, 0 to 255.
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_setIdleMode(self, slot: int, timeout: float = 3) -> int:
        """Sets a slot of the chassis to the mode "Idle".

        Args:
            slot: slot of the chassis: 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_setDIMode(self, slot: int, timeout: float = 3) -> int:
        """Sets a slot of the chassis to the mode "DI".

        Args:
            slot: slot of the chassis: 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_setDOMode(self, slot: int, timeout: float = 3) -> int:
        """Sets a slot of the chassis to the mode "DO".

        Args:
            slot: slot of the chassis: 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_setDIOMode(self, slot: int, timeout: float = 3) -> int:
        """Sets a slot of the chassis to the mode "DIO".

        Args:
            slot: slot of the chassis: 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_setMotionMode(self, slot: int, timeout: float = 3) -> int:
        """Sets a slot of the chassis to the mode "Motion".

        Args:
            slot: slot of the chassis: 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_setAIOMode(self, slot: int, timeout: float = 3) -> int:
        """Sets a slot of the chassis to the mode "AIO".

        Args:
            slot: slot of the chassis: 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_setSwitchMode(self, slot: int, timeout: float = 3) -> int:
        """Sets a slot of the chassis to the mode "Switch".

        Args:
            slot: slot of the chassis: 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """

class SystemModule_async(Packet_async, SystemBased):
    """Identity, clock and reboot of every device, and the slots of the chassis."""
    async def Sys_getDriverInfo_async(self) -> list[str]:
        """Reads name and version of the device's driver."""
    async def _getDriverInfo_dev_async(self, mode: int) -> str:
        """Reads driver information of a kind.

        Args:
            mode: mode number, 0 to 255.
        """
    async def Sys_getDeviceAlias_async(self) -> str:
        """Reads the name that a user gave the device."""
    async def Sys_setDeviceAlias_async(self, alias: str) -> int:
        """Sets the device's name.

        Args:
            alias: the name, up to 16 characters.
        """
    async def Sys_getRTC_async(self) -> str:
        """Reads the device's clock."""
    async def Sys_startRTCAlarm_async(self, mode: int, day: int, hour: int, minute: int, second: int) -> int:
        """Starts the clock's alarm.

        Args:
            mode: mode number, 0 to 255.
            day: day of the month.
            hour: hour, 0 to 23.
            minute: minute, 0 to 59.
            second: second, 0 to 59.
        """
    async def Sys_stopRTCAlarm_async(self) -> int:
        """Stops the clock's alarm."""
    async def _Sys_getRTCAlarmState_async(self) -> str:
        """Reads whether the alarm is on."""
    async def _Sys_getRTCAlarmConfig_async(self) -> str:
        """Reads the alarm's time."""
    async def Sys_getSerialNumber_async(self) -> str:
        """Reads the serial number."""
    async def Sys_reboot_async(self) -> int:
        """Restarts the device."""
    async def _Sys_rebootOnBootloader_async(self) -> int:
        """Restarts the device in its bootloader."""
    async def _getEEPROMPage_async(self, page_number: int) -> list[int]:
        """Reads a page of the EEPROM.

        Args:
            page_number: page of the EEPROM, 0 to 255.
        """
    async def _setEEPROMPage_async(self, page_number: int, int_list: Sequence[int]) -> int:
        """Writes a page of the EEPROM.

        Args:
            page_number: page of the EEPROM, 0 to 255.
            int_list: byte values, 0 to 255.
        """
    async def _getEEPROMDevice_async(self, device_number: int) -> list[int]:
        """Reads an EEPROM chip's identification.

        Args:
            device_number: number of the EEPROM chip, 0 to 255.
        """
    async def _setEEPROMByte_async(self, page_number: int, byte_index: int, value: int) -> int:
        """Writes a byte of the EEPROM.

        Args:
            page_number: page of the EEPROM, 0 to 255.
            byte_index: byte of the page, 0 to 255.
            value: byte value, 0 to 255.
        """
    async def _setSerialNumber_async(self, serial_num: str) -> int:
        """Sets the device's serial number.

        Args:
            serial_num: the serial number, up to 8 characters.
        """
    async def _resetFactory_async(self) -> int:
        """Resets the device to its factory state."""
    async def _getThreads_async(self) -> str:
        """Lists the firmware's threads."""
    async def Sys_getPythonVersion_async(self) -> str:
        """Returns the library's version; sends nothing."""
    async def Sys_getPinModeInPort_async(self, port: int) -> list[str]:
        """Reads what each pin of a port is used for.

        Args:
            port: port number, from 0.
        """
    async def Sys_setRTC_async(self, year: int, month: int, day: int, hour: int, minute: int, second: int) -> int:
        """Sets the device's clock.

        Args:
            year: year; below 100 it counts from 1900.
            month: month, 1 to 12.
            day: day of the month.
            hour: hour, 0 to 23.
            minute: minute, 0 to 59.
            second: second, 0 to 59.
        """
    async def Sys_getMode_async(self, slot: int) -> str:
        """Reads the mode of a slot of the chassis.

        Args:
            slot: slot of the chassis: 1, 2 or 4.
        """
    async def _Sys_setSlotMode_async(self, slot: int, mode: int) -> int:
        """Sets the mode of a slot of the chassis.

        Args:
            slot: slot of the chassis: 1, 2 or 4.
            mode: mode number, 0 to 255.
        """
    async def Sys_setIdleMode_async(self, slot: int) -> int:
        """Sets a slot of the chassis to the mode "Idle".

        Args:
            slot: slot of the chassis: 1, 2 or 4.
        """
    async def Sys_setDIMode_async(self, slot: int) -> int:
        """Sets a slot of the chassis to the mode "DI".

        Args:
            slot: slot of the chassis: 1, 2 or 4.
        """
    async def Sys_setDOMode_async(self, slot: int) -> int:
        """Sets a slot of the chassis to the mode "DO".

        Args:
            slot: slot of the chassis: 1, 2 or 4.
        """
    async def Sys_setDIOMode_async(self, slot: int) -> int:
        """Sets a slot of the chassis to the mode "DIO".

        Args:
            slot: slot of the chassis: 1, 2 or 4.
        """
    async def Sys_setMotionMode_async(self, slot: int) -> int:
        """Sets a slot of the chassis to the mode "Motion".

        Args:
            slot: slot of the chassis: 1, 2 or 4.
        """
    async def Sys_setAIOMode_async(self, slot: int) -> int:
        """Sets a slot of the chassis to the mode "AIO".

        Args:
            slot: slot of the chassis: 1, 2 or 4.
        """
    async def Sys_setSwitchMode_async(self, slot: int) -> int:
        """Sets a slot of the chassis to the mode "Switch".

        Args:
            slot: slot of the chassis: 1, 2 or 4.
        """

class NetworkModule(Packet):
    """A device's addresses."""
    gateway: str
    ip_addr: str | None
    subnet_mask: str
    mac_addr: str
    def Net_getGateway(self, timeout: float = 3) -> str:
        """Reads the gateway's address.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _setGateway(self, gateway: str, timeout: float = 3) -> int:
        """Sets the gateway's address.

        Args:
            gateway: dotted IPv4 address.
            timeout: seconds in which the device must answer, above 0.
        """
    def Net_getIPAddrAndSubmask(self, timeout: float = 3) -> list[str]:
        """Reads address and subnet mask.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Net_setIPAddrAndSubmask(self, ip_addr: str, subnet_mask: str = "255.255.255.0", timeout: float = 3) -> int:
        """Sets address and subnet mask. The open connection is not touched.

        Args:
            ip_addr: new dotted IPv4 address of the device.
            subnet_mask: dotted subnet mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def Net_getMACAddr(self, timeout: float = 3) -> str:
        """Reads the MAC address.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _setMACAddr(self, mac_addr: str, timeout: float = 3) -> int:
        """Sets the MAC address.

        Args:
            mac_addr: six hexadecimal numbers with colons between them.
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_getGateway(self, timeout: float = 3) -> str:
        """Second name of `Net_getGateway`.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_getIPAddrAndSubmask(self, timeout: float = 3) -> list[str]:
        """Second name of `Net_getIPAddrAndSubmask`.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_getMACAddr(self, timeout: float = 3) -> str:
        """Second name of `Net_getMACAddr`.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Sys_setIPAddrAndSubmask(self, ip_addr: str, subnet_mask: str = "255.255.255.0", timeout: float = 3) -> int:
        """Second name of `Net_setIPAddrAndSubmask`.

        Args:
            ip_addr: new dotted IPv4 address of the device.
            subnet_mask: dotted subnet mask.
            timeout: seconds in which the device must answer, above 0.
        """

class NetworkModule_async(Packet_async):
    """A device's addresses."""
    async def Net_getGateway_async(self) -> str:
        """Reads the gateway's address."""
    async def _setGateway_async(self, gateway: str) -> int:
        """Sets the gateway's address.

        Args:
            gateway: dotted IPv4 address.
        """
    async def Net_getIPAddrAndSubmask_async(self) -> list[str]:
        """Reads address and subnet mask."""
    async def Net_setIPAddrAndSubmask_async(self, ip_addr: str, subnet_mask: str = "255.255.255.0") -> int:
        """Sets address and subnet mask. The open connection is not touched.

        Args:
            ip_addr: new dotted IPv4 address of the device.
            subnet_mask: dotted subnet mask.
        """
    async def Net_getMACAddr_async(self) -> str:
        """Reads the MAC address."""
    async def _setMACAddr_async(self, mac_addr: str) -> int:
        """Sets the MAC address.

        Args:
            mac_addr: six hexadecimal numbers with colons between them.
        """
    async def Sys_getGateway_async(self) -> str:
        """Second name of `Net_getGateway`."""
    async def Sys_getIPAddrAndSubmask_async(self) -> list[str]:
        """Second name of `Net_getIPAddrAndSubmask`."""
    async def Sys_getMACAddr_async(self) -> str:
        """Second name of `Net_getMACAddr`."""
    async def Sys_setIPAddrAndSubmask_async(self, ip_addr: str, subnet_mask: str = "255.255.255.0") -> int:
        """Second name of `Net_setIPAddrAndSubmask`.

        Args:
            ip_addr: new dotted IPv4 address of the device.
            subnet_mask: dotted subnet mask.
        """

class WifiModule(Packet):
    """Lights, power status and radio of a Wi-Fi device."""
    bandwidth: int
    rssi: int
    def Wifi_setRedLED(self, value: int, timeout: float = 3) -> int:
        """Turns a status light on or off and leaves the others.

        Args:
            value: above 0 the light is on, else off.
            timeout: seconds in which the device must answer, above 0.
        """
    def Wifi_setGreenLED(self, value: int, timeout: float = 3) -> int:
        """Turns a status light on or off and leaves the others.

        Args:
            value: above 0 the light is on, else off.
            timeout: seconds in which the device must answer, above 0.
        """
    def Wifi_setBlueLED(self, value: int, timeout: float = 3) -> int:
        """Turns a status light on or off and leaves the others.

        Args:
            value: above 0 the light is on, else off.
            timeout: seconds in which the device must answer, above 0.
        """
    def Wifi_getPowerGoodStatus(self, timeout: float = 3) -> int:
        """Reads an input of the power supply.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Wifi_getChargeStatus(self, timeout: float = 3) -> int:
        """Reads an input of the power supply.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Wifi_resetLED(self, timeout: float = 3) -> int:
        """Turns all status lights off.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _setWifiConfiguration(self, retry_wifi_times: int, ap_time: int, timeout: float = 3) -> int:
        """Sets how the device joins its network.

        Args:
            retry_wifi_times: tries to join the network, 0 to 65535.
            ap_time: time as an access point, 0 to 65535, in the device's unit.
            timeout: seconds in which the device must answer, above 0.
        """
    def Wifi_getConfiguration(self, timeout: float = 3) -> list[int]:
        """Reads how the device joins its network.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _Wifi_setBandwidth(self, bandwidth: int, timeout: float = 3) -> int:
        """Sets the radio's bandwidth.

        Args:
            bandwidth: bandwidth in the device's numbering, at most 255; below 1 counts as 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def Wifi_getWifiBandWidth(self, timeout: float = 3) -> int:
        """Reads the radio's bandwidth.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Wifi_readRSSI(self, timeout: float = 3) -> int:
        """Reads the signal strength.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _Wifi_setAP(self, timeout: float = 3) -> int:
        """Makes the device an access point.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """

class WifiModule_async(Packet_async):
    """Lights, power status and radio of a Wi-Fi device."""
    async def Wifi_setRedLED_async(self, value: int) -> int:
        """Turns a status light on or off and leaves the others.

        Args:
            value: above 0 the light is on, else off.
        """
    async def Wifi_setGreenLED_async(self, value: int) -> int:
        """Turns a status light on or off and leaves the others.

        Args:
            value: above 0 the light is on, else off.
        """
    async def Wifi_setBlueLED_async(self, value: int) -> int:
        """Turns a status light on or off and leaves the others.

        Args:
            value: above 0 the light is on, else off.
        """
    async def Wifi_getPowerGoodStatus_async(self) -> int:
        """Reads an input of the power supply."""
    async def Wifi_getChargeStatus_async(self) -> int:
        """Reads an input of the power supply."""
    async def Wifi_resetLED_async(self) -> int:
        """Turns all status lights off."""
    async def _setWifiConfiguration_async(self, retry_wifi_times: int, ap_time: int) -> int:
        """Sets how the device joins its network.

        Args:
            retry_wifi_times: tries to join the network, 0 to 65535.
            ap_time: time as an access point, 0 to 65535, in the device's unit.
        """
    async def Wifi_getConfiguration_async(self) -> list[int]:
        """Reads how the device joins its network."""
    async def _Wifi_setBandwidth_async(self, bandwidth: int) -> int:
        """Sets the radio's bandwidth.

        Args:
            bandwidth: bandwidth in the device's numbering, at most 255; below 1 counts as 1.
        """
    async def Wifi_getWifiBandWidth_async(self) -> int:
        """Reads the radio's bandwidth."""
    async def Wifi_readRSSI_async(self) -> int:
        """Reads the signal strength."""
    async def _Wifi_setAP_async(self) -> int:
        """Makes the device an access point."""

class SystemAnalogModule(Packet):
    """Battery, acceleration and temperature of a Wi-Fi device."""
    battery: int
    thermo: float
    def _Wifi_readAcceleration(self, timeout: float = 3) -> list[int]:
        """Reads the acceleration. The awaitable form is `_Wifi_readAccleration_async` (compatibility note 4).

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Wifi_readBattery(self, timeout: float = 3) -> int:
        """Reads the battery.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _Wifi_readThermo(self, timeout: float = 3) -> float:
        """Reads the temperature.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _Wifi_resetAIBuffer(self, timeout: float = 3) -> int:
        """Empties the device's buffer of samples.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """

class SystemAnalogModule_async(Packet_async):
    """Battery, acceleration and temperature of a Wi-Fi device."""
    async def _Wifi_readAccleration_async(self) -> list[int]:
        """Reads the acceleration. The awaitable form is `_Wifi_readAccleration_async` (compatibility note 4)."""
    async def Wifi_readBattery_async(self) -> int:
        """Reads the battery."""
    async def _Wifi_readThermo_async(self) -> float:
        """Reads the temperature."""
    async def _Wifi_resetAIBuffer_async(self) -> int:
        """Empties the device's buffer of samples."""

class SNTPModule(Packet):
    """The device's clock set from a time server."""
    def SNTP_syncNow(self, timeout: float = 3) -> int:
        """Synchronises the clock now.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def SNTP_getSyncStatus(self, timeout: float = 3) -> str:
        """Reads the state of the synchronisation.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def SNTP_getServerIP(self, timeout: float = 3) -> str:
        """Reads the time server's address.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def SNTP_setServerIP(self, ip_addr: str = "255.255.255.255", timeout: float = 3) -> int:
        """Sets the time server's address.

        Args:
            ip_addr: dotted IPv4 address of the time server.
            timeout: seconds in which the device must answer, above 0.
        """
    def SNTP_getPeriod(self, timeout: float = 3) -> float:
        """Reads the time between synchronisations.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def SNTP_setPeriod(self, period: float, timeout: float = 3) -> int:
        """Sets the time between synchronisations.

        Args:
            period: time between synchronisations, 32-bit float, in the device's unit.
            timeout: seconds in which the device must answer, above 0.
        """

class SNTPModule_async(Packet_async):
    """The device's clock set from a time server."""
    async def SNTP_syncNow_async(self) -> int:
        """Synchronises the clock now."""
    async def SNTP_getSyncStatus_async(self) -> str:
        """Reads the state of the synchronisation."""
    async def SNTP_getServerIP_async(self) -> str:
        """Reads the time server's address."""
    async def SNTP_setServerIP_async(self, ip_addr: str = "255.255.255.255") -> int:
        """Sets the time server's address.

        Args:
            ip_addr: dotted IPv4 address of the time server.
        """
    async def SNTP_getPeriod_async(self) -> float:
        """Reads the time between synchronisations."""
    async def SNTP_setPeriod_async(self, period: float) -> int:
        """Sets the time between synchronisations.

        Args:
            period: time between synchronisations, 32-bit float, in the device's unit.
        """

class SDCardModule(Packet):
    """The memory card of a device."""
    def _SD_open(self, timeout: float = 3) -> int:
        """Opens the card.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _SD_close(self, timeout: float = 3) -> int:
        """Closes the card.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def SD_getStorage(self, timeout: float = 3) -> int:
        """Reads the capacity.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def SD_openFile(self, filename: str | list[str], mode: int, timeout: float = 3) -> int:
        """Opens a file.

        Args:
            filename: name of the file, up to 255 characters of one byte.
            mode: how the file is opened, in the device's numbering, 0 to 255.
            timeout: seconds in which the device must answer, above 0.
        """
    def SD_writeFile(self, write_data: str | list[str], timeout: float = 3) -> int:
        """Writes to the open file.

        Args:
            write_data: text, or single characters; up to 255 of one byte each.
            timeout: seconds in which the device must answer, above 0.
        """
    def SD_readFile(self, byte_to_read: int, timeout: float = 3) -> list[str]:
        """Reads from the open file. A refusal cannot be distinguished from content.

        Args:
            byte_to_read: bytes to read, 0 to 254.
            timeout: seconds in which the device must answer, above 0.
        """
    def SD_closeFile(self, timeout: float = 3) -> int:
        """Closes the open file.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """

class SDCardModule_async(Packet_async):
    """The memory card of a device."""
    async def _SD_open_async(self) -> int:
        """Opens the card."""
    async def _SD_close_async(self) -> int:
        """Closes the card."""
    async def SD_getStorage_async(self) -> int:
        """Reads the capacity."""
    async def SD_openFile_async(self, filename: str | list[str], mode: int) -> int:
        """Opens a file.

        Args:
            filename: name of the file, up to 255 characters of one byte.
            mode: how the file is opened, in the device's numbering, 0 to 255.
        """
    async def SD_writeFile_async(self, write_data: str | list[str]) -> int:
        """Writes to the open file.

        Args:
            write_data: text, or single characters; up to 255 of one byte each.
        """
    async def SD_readFile_async(self, byte_to_read: int) -> list[str]:
        """Reads from the open file. A refusal cannot be distinguished from content.

        Args:
            byte_to_read: bytes to read, 0 to 254.
        """
    async def SD_closeFile_async(self) -> int:
        """Closes the open file."""

class DIOBased:
    """General-purpose digital lines."""
    di_dict: dict[int, list[int]]
    do_dict: dict[int, list[int]]
    dio_num_pins_per_port: int
    def DI_getPinMap(self) -> dict[int, list[int]]:
        """Returns which pins can be inputs."""
    def DO_getPinMap(self) -> dict[int, list[int]]:
        """Returns which pins can be outputs."""
    def _getPinIndexInInt(self, pin: list[int] | int) -> int:
        """Converts pins to a mask.

        Args:
            pin: pin numbers, or a mask of 16 bits with bit i for pin i.
        """
    def _getPinIndexInList(self, pin: list[int] | int) -> list[int]:
        """Converts pins to a list.

        Args:
            pin: pin numbers, or a mask of 16 bits with bit i for pin i.
        """
    def _checkDIPort(self, port: int) -> None:
        """Raises DIPortNotAvaliableError unless the port has inputs.

        Args:
            port: port number, a key of the model's input map.
        """
    def _checkDOPort(self, port: int) -> None:
        """Raises DOPortNotAvaliableError unless the port has outputs.

        Args:
            port: port number, a key of the model's output map.
        """
    def _checkDIPortAndPin(self, port: int, pin_list: list[int]) -> None:
        """Raises PinsNotExistError unless all pins can be inputs.

        Args:
            port: port number, a key of the model's input map.
            pin_list: pin numbers.
        """
    def _checkDOPortAndPin(self, port: int, pin_list: list[int]) -> None:
        """Raises PinsNotExistError unless all pins can be outputs.

        Args:
            port: port number, a key of the model's output map.
            pin_list: pin numbers.
        """

class DIOModule(Packet, DIOBased):
    """General-purpose digital lines."""
    def __init__(self, di_dict: dict[int, list[int]], do_dict: dict[int, list[int]], dio_num_pins_per_port: int) -> None:
        """Sets the resources of the model.

        Args:
            di_dict: pins that can be inputs, by port.
            do_dict: pins that can be outputs, by port.
            dio_num_pins_per_port: number of pins in the per-pin lists.
        """
    def DIO_loadStartup(self, port: int, timeout: float = 3) -> tuple[list[int], list[int], list[int]]:
        """Reads the port's power-up configuration.

        Args:
            port: port number; checked by the device.
            timeout: seconds in which the device must answer, above 0.
        """
    def _DIO_saveStartup(self, port: int, enabled: int, direction: int, state: int, timeout: float = 3) -> int:
        """Saves the port's power-up configuration.

        Args:
            port: port number; checked by the device.
            enabled: 16 bits: 1 a pin in use as digital line, 0 a released one.
            direction: 16 bits: 1 an output, 0 an input.
            state: 16 bits: 1 high, 0 low.
            timeout: seconds in which the device must answer, above 0.
        """
    def _getDIOCurrent(self, port: int, mask: int, timeout: float = 3) -> tuple[list[int], list[int], list[int]]:
        """Reads the current configuration.

        Args:
            port: port number; checked by the device.
            mask: pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port.
            timeout: seconds in which the device must answer, above 0.
        """
    def _setDIOCurrent(self, port: int, mask: int, enabled: int, direction: int, state: int, timeout: float = 3) -> int:
        """Configures lines.

        Args:
            port: port number; checked by the device.
            mask: pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port.
            enabled: 16 bits: 1 a pin in use as digital line, 0 a released one.
            direction: 16 bits: 1 an output, 0 an input.
            state: 16 bits: 1 high, 0 low.
            timeout: seconds in which the device must answer, above 0.
        """
    def _toggleDIODirection(self, port: int, mask: int, state: int, timeout: float = 3) -> int:
        """Turns inputs into outputs and outputs into inputs.

        Args:
            port: port number; checked by the device.
            mask: pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port.
            state: 16 bits: 1 high, 0 low.
            timeout: seconds in which the device must answer, above 0.
        """
    def _getDIOState(self, port: int, mask: int, timeout: float = 3) -> list[int]:
        """Reads the stored state of lines.

        Args:
            port: port number; checked by the device.
            mask: pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port.
            timeout: seconds in which the device must answer, above 0.
        """
    def _setDIOState(self, port: int, mask: int, state: int, timeout: float = 3) -> int:
        """Stores a state of lines without driving them.

        Args:
            port: port number; checked by the device.
            mask: pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port.
            state: 16 bits: 1 high, 0 low.
            timeout: seconds in which the device must answer, above 0.
        """
    def _readDI(self, port: int, timeout: float = 3) -> int:
        """Makes the device read the port into its stored state.

        Args:
            port: port number; checked by the device.
            timeout: seconds in which the device must answer, above 0.
        """
    def _writeDO(self, port: int, timeout: float = 3) -> int:
        """Makes the device drive the port from its stored state.

        Args:
            port: port number; checked by the device.
            timeout: seconds in which the device must answer, above 0.
        """
    def _readAndGetDI(self, port: int, mask: int, timeout: float = 3) -> list[int]:
        """Reads lines.

        Args:
            port: port number; checked by the device.
            mask: pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port.
            timeout: seconds in which the device must answer, above 0.
        """
    def _setAndWriteDO(self, port: int, mask: int, state: int, timeout: float = 3) -> list[int]:
        """Drives lines.

        Args:
            port: port number; checked by the device.
            mask: pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port.
            state: 16 bits: 1 high, 0 low.
            timeout: seconds in which the device must answer, above 0.
        """
    def _DIO_setPortDI(self, port: int, timeout: float = 3) -> int:
        """Makes a whole port digital inputs.

        Args:
            port: port number, a key of the model's input map.
            timeout: seconds in which the device must answer, above 0.
        """
    def _DIO_setPortDO(self, port: int, timeout: float = 3) -> int:
        """Makes a whole port digital outputs.

        Args:
            port: port number, a key of the model's output map.
            timeout: seconds in which the device must answer, above 0.
        """
    def _DIO_setPortIdle(self, port: int, timeout: float = 3) -> int:
        """Releases a whole port.

        Args:
            port: port number, a key of the model's output map.
            timeout: seconds in which the device must answer, above 0.
        """
    def _toggleAndWriteDO(self, port: int, mask: int, timeout: float = 3) -> list[int]:
        """Toggles lines.

        Args:
            port: port number; checked by the device.
            mask: pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port.
            timeout: seconds in which the device must answer, above 0.
        """
    def _closeDIOInPins(self, port: int, pin: int, timeout: float = 3) -> int:
        """Releases pins.

        Args:
            port: port number; checked by the device.
            pin: mask of 16 bits, bit i for pin i.
            timeout: seconds in which the device must answer, above 0.
        """
    def _closeDIOInPort(self, port: int, timeout: float = 3) -> int:
        """Releases a whole port.

        Args:
            port: port number; checked by the device.
            timeout: seconds in which the device must answer, above 0.
        """
    def DI_openPort(self, port: int, timeout: float = 3) -> int:
        """Opens a whole port as digital inputs.

        Args:
            port: port number, a key of the model's input map.
            timeout: seconds in which the device must answer, above 0.
        """
    def DI_closePort(self, port: int, timeout: float = 3) -> int:
        """Releases a whole port.

        Args:
            port: port number, a key of the model's input map.
            timeout: seconds in which the device must answer, above 0.
        """
    def DI_openPins(self, port: int, pin: list[int], timeout: float = 3) -> int:
        """Opens pins as digital inputs.

        Args:
            port: port number, a key of the model's input map.
            pin: pin numbers of the port.
            timeout: seconds in which the device must answer, above 0.
        """
    def DI_closePins(self, port: int, pin: list[int], timeout: float = 3) -> int:
        """Releases pins.

        Args:
            port: port number, a key of the model's input map.
            pin: pin numbers of the port.
            timeout: seconds in which the device must answer, above 0.
        """
    def DI_readPort(self, port: int, timeout: float = 3) -> list[int]:
        """Reads a whole port.

        Args:
            port: port number, a key of the model's input map.
            timeout: seconds in which the device must answer, above 0.
        """
    def DI_readPins(self, port: int, pin: list[int], timeout: float = 3) -> list[int]:
        """Reads pins.

        Args:
            port: port number, a key of the model's input map.
            pin: pin numbers of the port.
            timeout: seconds in which the device must answer, above 0.
        """
    def DO_openPort(self, port: int, timeout: float = 3) -> int:
        """Opens a whole port as digital outputs at low level.

        Args:
            port: port number, a key of the model's output map.
            timeout: seconds in which the device must answer, above 0.
        """
    def DO_closePort(self, port: int, timeout: float = 3) -> int:
        """Releases a whole port.

        Args:
            port: port number, a key of the model's output map.
            timeout: seconds in which the device must answer, above 0.
        """
    def DO_openPins(self, port: int, pin: list[int] | int, timeout: float = 3) -> int:
        """Opens pins as digital outputs at low level.

        Args:
            port: port number, a key of the model's output map.
            pin: pin numbers, or a mask of 16 bits with bit i for pin i.
            timeout: seconds in which the device must answer, above 0.
        """
    def DO_closePins(self, port: int, pin: list[int] | int, timeout: float = 3) -> int:
        """Releases pins.

        Args:
            port: port number, a key of the model's output map.
            pin: pin numbers, or a mask of 16 bits with bit i for pin i.
            timeout: seconds in which the device must answer, above 0.
        """
    def DO_writePort(self, port: int, value: list[int] | int, timeout: float = 3) -> int:
        """Drives a whole port; pins past the end of a list go low.

        Args:
            port: port number, a key of the model's output map.
            value: 0 or 1 per pin from pin 0 on, or a word of 16 bits.
            timeout: seconds in which the device must answer, above 0.
        """
    def DO_writePins(self, port: int, pin: list[int] | int, value: list[int] | int, timeout: float = 3) -> int:
        """Drives pins.

        Args:
            port: port number, a key of the model's output map.
            pin: pin numbers, or a mask of 16 bits with bit i for pin i.
            value: 0 or 1 per pin of the list, or a state word for a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def DO_togglePort(self, port: int, timeout: float = 3) -> list[int]:
        """Toggles a whole port.

        Args:
            port: port number, a key of the model's output map.
            timeout: seconds in which the device must answer, above 0.
        """
    def DO_togglePins(self, port: int, pin: list[int] | int, timeout: float = 3) -> list[int]:
        """Toggles pins. The device checks the pins.

        Args:
            port: port number, a key of the model's output map.
            pin: pin numbers, or a mask of 16 bits with bit i for pin i.
            timeout: seconds in which the device must answer, above 0.
        """

class DIOModule_async(Packet_async, DIOBased):
    """General-purpose digital lines."""
    def __init__(self, di_dict: dict[int, list[int]], do_dict: dict[int, list[int]], dio_num_pins_per_port: int) -> None:
        """Sets the resources of the model.

        Args:
            di_dict: pins that can be inputs, by port.
            do_dict: pins that can be outputs, by port.
            dio_num_pins_per_port: number of pins in the per-pin lists.
        """
    async def DIO_loadStartup_async(self, port: int) -> tuple[list[int], list[int], list[int]]:
        """Reads the port's power-up configuration.

        Args:
            port: port number; checked by the device.
        """
    async def _DIO_saveStartup_async(self, port: int, enabled: int, direction: int, state: int) -> int:
        """Saves the port's power-up configuration.

        Args:
            port: port number; checked by the device.
            enabled: 16 bits: 1 a pin in use as digital line, 0 a released one.
            direction: 16 bits: 1 an output, 0 an input.
            state: 16 bits: 1 high, 0 low.
        """
    async def _getDIOCurrent_async(self, port: int, mask: int) -> tuple[list[int], list[int], list[int]]:
        """Reads the current configuration.

        Args:
            port: port number; checked by the device.
            mask: pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port.
        """
    async def _setDIOCurrent_async(self, port: int, mask: int, enabled: int, direction: int, state: int) -> int:
        """Configures lines.

        Args:
            port: port number; checked by the device.
            mask: pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port.
            enabled: 16 bits: 1 a pin in use as digital line, 0 a released one.
            direction: 16 bits: 1 an output, 0 an input.
            state: 16 bits: 1 high, 0 low.
        """
    async def _toggleDIODirection_async(self, port: int, mask: int, state: int) -> int:
        """Turns inputs into outputs and outputs into inputs.

        Args:
            port: port number; checked by the device.
            mask: pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port.
            state: 16 bits: 1 high, 0 low.
        """
    async def _getDIOState_async(self, port: int, mask: int) -> list[int]:
        """Reads the stored state of lines.

        Args:
            port: port number; checked by the device.
            mask: pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port.
        """
    async def _setDIOState_async(self, port: int, mask: int, state: int) -> int:
        """Stores a state of lines without driving them.

        Args:
            port: port number; checked by the device.
            mask: pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port.
            state: 16 bits: 1 high, 0 low.
        """
    async def _readDI_async(self, port: int) -> int:
        """Makes the device read the port into its stored state.

        Args:
            port: port number; checked by the device.
        """
    async def _writeDO_async(self, port: int) -> int:
        """Makes the device drive the port from its stored state.

        Args:
            port: port number; checked by the device.
        """
    async def _readAndGetDI_async(self, port: int, mask: int) -> list[int]:
        """Reads lines.

        Args:
            port: port number; checked by the device.
            mask: pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port.
        """
    async def _setAndWriteDO_async(self, port: int, mask: int, state: int) -> list[int]:
        """Drives lines.

        Args:
            port: port number; checked by the device.
            mask: pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port.
            state: 16 bits: 1 high, 0 low.
        """
    async def _DIO_setPortDI_async(self, port: int) -> int:
        """Makes a whole port digital inputs.

        Args:
            port: port number, a key of the model's input map.
        """
    async def _DIO_setPortDO_async(self, port: int) -> int:
        """Makes a whole port digital outputs.

        Args:
            port: port number, a key of the model's output map.
        """
    async def _DIO_setPortIdle_async(self, port: int) -> int:
        """Releases a whole port.

        Args:
            port: port number, a key of the model's output map.
        """
    async def _toggleAndWriteDO_async(self, port: int, mask: int) -> list[int]:
        """Toggles lines.

        Args:
            port: port number; checked by the device.
            mask: pins that the command addresses: 16 bits, bit i for pin i; 65535 is the port.
        """
    async def _closeDIOInPins_async(self, port: int, pin: int) -> int:
        """Releases pins.

        Args:
            port: port number; checked by the device.
            pin: mask of 16 bits, bit i for pin i.
        """
    async def _closeDIOInPort_async(self, port: int) -> int:
        """Releases a whole port.

        Args:
            port: port number; checked by the device.
        """
    async def DI_openPort_async(self, port: int) -> int:
        """Opens a whole port as digital inputs.

        Args:
            port: port number, a key of the model's input map.
        """
    async def DI_closePort_async(self, port: int) -> int:
        """Releases a whole port.

        Args:
            port: port number, a key of the model's input map.
        """
    async def DI_openPins_async(self, port: int, pin: list[int]) -> int:
        """Opens pins as digital inputs.

        Args:
            port: port number, a key of the model's input map.
            pin: pin numbers of the port.
        """
    async def DI_closePins_async(self, port: int, pin: list[int]) -> int:
        """Releases pins.

        Args:
            port: port number, a key of the model's input map.
            pin: pin numbers of the port.
        """
    async def DI_readPort_async(self, port: int) -> list[int]:
        """Reads a whole port.

        Args:
            port: port number, a key of the model's input map.
        """
    async def DI_readPins_async(self, port: int, pin: list[int]) -> list[int]:
        """Reads pins.

        Args:
            port: port number, a key of the model's input map.
            pin: pin numbers of the port.
        """
    async def DO_openPort_async(self, port: int) -> int:
        """Opens a whole port as digital outputs at low level.

        Args:
            port: port number, a key of the model's output map.
        """
    async def DO_closePort_async(self, port: int) -> int:
        """Releases a whole port.

        Args:
            port: port number, a key of the model's output map.
        """
    async def DO_openPins_async(self, port: int, pin: list[int] | int) -> int:
        """Opens pins as digital outputs at low level.

        Args:
            port: port number, a key of the model's output map.
            pin: pin numbers, or a mask of 16 bits with bit i for pin i.
        """
    async def DO_closePins_async(self, port: int, pin: list[int] | int) -> int:
        """Releases pins.

        Args:
            port: port number, a key of the model's output map.
            pin: pin numbers, or a mask of 16 bits with bit i for pin i.
        """
    async def DO_writePort_async(self, port: int, value: list[int] | int) -> int:
        """Drives a whole port; pins past the end of a list go low.

        Args:
            port: port number, a key of the model's output map.
            value: 0 or 1 per pin from pin 0 on, or a word of 16 bits.
        """
    async def DO_writePins_async(self, port: int, pin: list[int] | int, value: list[int] | int) -> int:
        """Drives pins.

        Args:
            port: port number, a key of the model's output map.
            pin: pin numbers, or a mask of 16 bits with bit i for pin i.
            value: 0 or 1 per pin of the list, or a state word for a mask.
        """
    async def DO_togglePort_async(self, port: int) -> list[int]:
        """Toggles a whole port.

        Args:
            port: port number, a key of the model's output map.
        """
    async def DO_togglePins_async(self, port: int, pin: list[int] | int) -> list[int]:
        """Toggles pins. The device checks the pins.

        Args:
            port: port number, a key of the model's output map.
            pin: pin numbers, or a mask of 16 bits with bit i for pin i.
        """

class PWMBased:
    """Outputs of pulse-width modulation."""
    def _checkPWMChannel(self, channel: int) -> None:
        """Raises CounterChannelNotAvaliableError unless the channel is 0 or 1 (compatibility note 2).

        Args:
            channel: channel, 0 or 1.
        """

class PWMModule(Packet, PWMBased):
    """Outputs of pulse-width modulation."""
    def PWM_open(self, channel: int, timeout: float = 3) -> int:
        """Claims a channel.

        Args:
            channel: channel, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def PWM_start(self, channel: int, timeout: float = 3) -> int:
        """Starts the waveform.

        Args:
            channel: channel, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def PWM_stop(self, channel: int, timeout: float = 3) -> int:
        """Stops the waveform.

        Args:
            channel: channel, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def PWM_close(self, channel: int, timeout: float = 3) -> int:
        """Releases a channel.

        Args:
            channel: channel, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def PWM_setFrequency(self, channel: int, frequency: float, timeout: float = 3) -> int:
        """Sets the frequency.

        Args:
            channel: channel, 0 or 1.
            frequency: frequency in the device's unit, 32-bit float; checked by the device.
            timeout: seconds in which the device must answer, above 0.
        """
    def PWM_setDutyCycle(self, channel: int, duty_cycle: float, timeout: float = 3) -> int:
        """Sets the duty cycle.

        Args:
            channel: channel, 0 or 1.
            duty_cycle: duty cycle in the device's unit, 32-bit float; checked by the device.
            timeout: seconds in which the device must answer, above 0.
        """

class PWMModule_async(Packet_async, PWMBased):
    """Outputs of pulse-width modulation."""
    async def PWM_open_async(self, channel: int) -> int:
        """Claims a channel.

        Args:
            channel: channel, 0 or 1.
        """
    async def PWM_start_async(self, channel: int) -> int:
        """Starts the waveform.

        Args:
            channel: channel, 0 or 1.
        """
    async def PWM_stop_async(self, channel: int) -> int:
        """Stops the waveform.

        Args:
            channel: channel, 0 or 1.
        """
    async def PWM_close_async(self, channel: int) -> int:
        """Releases a channel.

        Args:
            channel: channel, 0 or 1.
        """
    async def PWM_setFrequency_async(self, channel: int, frequency: float) -> int:
        """Sets the frequency.

        Args:
            channel: channel, 0 or 1.
            frequency: frequency in the device's unit, 32-bit float; checked by the device.
        """
    async def PWM_setDutyCycle_async(self, channel: int, duty_cycle: float) -> int:
        """Sets the duty cycle.

        Args:
            channel: channel, 0 or 1.
            duty_cycle: duty cycle in the device's unit, 32-bit float; checked by the device.
        """

class CounterBased:
    """Pulse counters."""
    def _checkCounterChannel(self, channel: int) -> None:
        """Raises PWMChannelNotAvaliableError unless the channel is 0 or 1 (compatibility note 2).

        Args:
            channel: channel, 0 or 1.
        """

class CounterModule(Packet, CounterBased):
    """Pulse counters."""
    def Counter_open(self, channel: int, timeout: float = 3) -> int:
        """Claims a channel.

        Args:
            channel: channel, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def Counter_start(self, channel: int, timeout: float = 3) -> int:
        """Starts counting.

        Args:
            channel: channel, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def Counter_stop(self, channel: int, timeout: float = 3) -> int:
        """Stops counting.

        Args:
            channel: channel, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def Counter_close(self, channel: int, timeout: float = 3) -> int:
        """Releases a channel.

        Args:
            channel: channel, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def Counter_setFreqWindow(self, channel: int, window_size: float, timeout: float = 3) -> int:
        """Sets the window over which the frequency is measured.

        Args:
            channel: channel, 0 or 1.
            window_size: window of the frequency, 32-bit float, in the device's unit.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Counter_read(self, channel: int, timeout: float = 3) -> list[int | float]:
        """Reads position and frequency of one moment.

        Args:
            channel: channel, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def Counter_readPosition(self, channel: int, timeout: float = 3) -> int:
        """Reads one value of a channel.

        Args:
            channel: channel, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def Counter_readFrequency(self, channel: int, timeout: float = 3) -> float:
        """Reads one value of a channel.

        Args:
            channel: channel, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def Counter_setPosition(self, channel: int, position: int, timeout: float = 3) -> int:
        """Sets the position.

        Args:
            channel: channel, 0 or 1.
            position: counts; of 64 bits without sign the low 48 are sent.
            timeout: seconds in which the device must answer, above 0.
        """
    def Counter_setEdge(self, channel: int, edge: int, timeout: float = 3) -> int:
        """Chooses the edge that counts.

        Args:
            channel: channel, 0 or 1.
            edge: edge that counts, in the device's numbering, 0 to 255; the awaitable form sends 1 for all from 1 on and else 0 (compatibility note 3).
            timeout: seconds in which the device must answer, above 0.
        """

class CounterModule_async(Packet_async, CounterBased):
    """Pulse counters."""
    async def Counter_open_async(self, channel: int) -> int:
        """Claims a channel.

        Args:
            channel: channel, 0 or 1.
        """
    async def Counter_start_async(self, channel: int) -> int:
        """Starts counting.

        Args:
            channel: channel, 0 or 1.
        """
    async def Counter_stop_async(self, channel: int) -> int:
        """Stops counting.

        Args:
            channel: channel, 0 or 1.
        """
    async def Counter_close_async(self, channel: int) -> int:
        """Releases a channel.

        Args:
            channel: channel, 0 or 1.
        """
    async def Counter_setFreqWindow_async(self, channel: int, window_size: float) -> int:
        """Sets the window over which the frequency is measured.

        Args:
            channel: channel, 0 or 1.
            window_size: window of the frequency, 32-bit float, in the device's unit.
        """
    async def _Counter_read_async(self, channel: int) -> list[int | float]:
        """Reads position and frequency of one moment.

        Args:
            channel: channel, 0 or 1.
        """
    async def Counter_readPosition_async(self, channel: int) -> int:
        """Reads one value of a channel.

        Args:
            channel: channel, 0 or 1.
        """
    async def Counter_readFrequency_async(self, channel: int) -> float:
        """Reads one value of a channel.

        Args:
            channel: channel, 0 or 1.
        """
    async def Counter_setPosition_async(self, channel: int, position: int) -> int:
        """Sets the position.

        Args:
            channel: channel, 0 or 1.
            position: counts; of 64 bits without sign the low 48 are sent.
        """
    async def Counter_setEdge_async(self, channel: int, edge: int) -> int:
        """Chooses the edge that counts.

        Args:
            channel: channel, 0 or 1.
            edge: edge that counts, in the device's numbering, 0 to 255; the awaitable form sends 1 for all from 1 on and else 0 (compatibility note 3).
        """

class EncoderBased:
    """The quadrature encoder."""
    def _checkEncoderIndex(self, index: int) -> None:
        """Raises EncoderChannelNotAvaliableError unless the channel is 0.

        Args:
            index: channel, 0.
        """

class EncoderModule(Packet, EncoderBased):
    """The quadrature encoder."""
    def Encoder_open(self, channel: int, timeout: float = 3) -> int:
        """Claims a channel.

        Args:
            channel: channel, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Encoder_start(self, channel: int, timeout: float = 3) -> int:
        """Starts counting.

        Args:
            channel: channel, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Encoder_stop(self, channel: int, timeout: float = 3) -> int:
        """Stops counting.

        Args:
            channel: channel, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Encoder_close(self, channel: int, timeout: float = 3) -> int:
        """Releases a channel.

        Args:
            channel: channel, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Encoder_setFreqWindow(self, channel: int, window_size: float, timeout: float = 3) -> int:
        """Sets the window over which the frequency is measured.

        Args:
            channel: channel, 0.
            window_size: window of the frequency, 32-bit float, in the device's unit.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Encoder_read(self, channel: int, timeout: float = 3) -> list[int | float]:
        """Reads position and frequency of one moment.

        Args:
            channel: channel, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Encoder_readPosition(self, channel: int, timeout: float = 3) -> int:
        """Reads one value of a channel.

        Args:
            channel: channel, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Encoder_readFrequency(self, channel: int, timeout: float = 3) -> float:
        """Reads one value of a channel.

        Args:
            channel: channel, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Encoder_setPosition(self, channel: int, position: int, timeout: float = 3) -> int:
        """Sets the position.

        Args:
            channel: channel, 0.
            position: counts; of 64 bits with sign the low 48 are sent.
            timeout: seconds in which the device must answer, above 0.
        """
    def Encoder_setDirection(self, channel: int, direction: int, timeout: float = 3) -> int:
        """Sets the counting direction.

        Args:
            channel: channel, 0.
            direction: 1 or more reverses the counting direction, else 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Encoder_getDirection(self, channel: int, timeout: float = 3) -> int:
        """Reads the counting direction.

        Args:
            channel: channel, 0.
            timeout: seconds in which the device must answer, above 0.
        """

class EncoderModule_async(Packet_async, EncoderBased):
    """The quadrature encoder."""
    async def Encoder_open_async(self, channel: int) -> int:
        """Claims a channel.

        Args:
            channel: channel, 0.
        """
    async def Encoder_start_async(self, channel: int) -> int:
        """Starts counting.

        Args:
            channel: channel, 0.
        """
    async def Encoder_stop_async(self, channel: int) -> int:
        """Stops counting.

        Args:
            channel: channel, 0.
        """
    async def Encoder_close_async(self, channel: int) -> int:
        """Releases a channel.

        Args:
            channel: channel, 0.
        """
    async def Encoder_setFreqWindow_async(self, channel: int, window_size: float) -> int:
        """Sets the window over which the frequency is measured.

        Args:
            channel: channel, 0.
            window_size: window of the frequency, 32-bit float, in the device's unit.
        """
    async def _Encoder_read_async(self, channel: int) -> list[int | float]:
        """Reads position and frequency of one moment.

        Args:
            channel: channel, 0.
        """
    async def Encoder_readPosition_async(self, channel: int) -> int:
        """Reads one value of a channel.

        Args:
            channel: channel, 0.
        """
    async def Encoder_readFrequency_async(self, channel: int) -> float:
        """Reads one value of a channel.

        Args:
            channel: channel, 0.
        """
    async def Encoder_setPosition_async(self, channel: int, position: int) -> int:
        """Sets the position.

        Args:
            channel: channel, 0.
            position: counts; of 64 bits with sign the low 48 are sent.
        """
    async def Encoder_setDirection_async(self, channel: int, direction: int) -> int:
        """Sets the counting direction.

        Args:
            channel: channel, 0.
            direction: 1 or more reverses the counting direction, else 0.
        """
    async def Encoder_getDirection_async(self, channel: int) -> int:
        """Reads the counting direction.

        Args:
            channel: channel, 0.
        """

class I2CBased:
    """Ports of an I2C bus whose master is the device."""
    I2C_dict: dict[int, list[tuple[int, int]]]
    def _checkI2CPort(self, port: int) -> None:
        """Raises I2CPortNotAvaliableError unless the model has the port.

        Args:
            port: port as the device counts it.
        """
    def _I2C_getPinMapPort(self, I2C_port: int) -> list[int]:
        """Lists the digital ports of a port's lines.

        Args:
            I2C_port: port as the device counts it.
        """
    def I2C_getPinMap(self) -> dict[int, list[tuple[int, int]]]:
        """Returns which ports there are, and their lines."""
    def _checkI2CClockRate(self, mode: int) -> None:
        """Raises I2CClockNotSupportError unless `mode` is 0, 1, 2 or 3.

        Args:
            mode: 0: 100 kHz, 1: 400 kHz, 2: 1 MHz, 3: 3.4 MHz.
        """
    def _checkI2CAddressSize(self, mode: int) -> None:
        """Raises I2CAddressSizeNotVaildError unless `mode` is 0 or 1.

        Args:
            mode: size of addresses, 0 or 1 in the device's numbering.
        """

class I2CModule(Packet, I2CBased):
    """Ports of an I2C bus whose master is the device."""
    def _checkI2CPinState(self, port: int, allow_state: list[str], timeout: float = 3) -> None:
        """Raises I2CPortNotAvaliableError unless all lines of the port are in an allowed mode.

        Args:
            port: port in the device's numbering.
            allow_state: modes that are allowed.
            timeout: seconds in which the device must answer, above 0.
        """
    def __init__(self, I2C_dict: dict[int, list[tuple[int, int]]]) -> None:
        """Sets the resources of the model.

        Args:
            I2C_dict: ports, each with its lines as digital port and pin.
        """
    def I2C_open(self, port: int, timeout: float = 3) -> int:
        """Opens a port and takes its lines.

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """
    def I2C_setClockRate(self, port: int, mode: int, timeout: float = 3) -> int:
        """Sets the clock.

        Args:
            port: port of the bus.
            mode: 0: 100 kHz, 1: 400 kHz, 2: 1 MHz, 3: 3.4 MHz.
            timeout: seconds in which the device must answer, above 0.
        """
    def I2C_read(self, port: int, read_address: int, bytes_to_read: int, timeout: float = 3) -> list[int]:
        """Reads from a chip.

        Args:
            port: port of the bus.
            read_address: address on the bus, 0 to 255.
            bytes_to_read: number of bytes, 0 to 255.
            timeout: seconds in which the device must answer, above 0.
        """
    def I2C_write(self, port: int, write_address: int, write_data: list[int], timeout: float = 3) -> int:
        """Writes to a chip.

        Args:
            port: port of the bus.
            write_address: address on the bus, 0 to 255.
            write_data: at most 255 bytes.
            timeout: seconds in which the device must answer, above 0.
        """
    def I2C_close(self, port: int, timeout: float = 3) -> int:
        """Closes a port and frees its lines.

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """
    def I2C_reset(self, port: int, timeout: float = 3) -> int:
        """Resets a port to its initial settings.

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """
    def I2C_setAddressSize(self, port: int, mode: int, timeout: float = 3) -> int:
        """Sets the size of addresses.

        Args:
            port: port of the bus.
            mode: size of addresses, 0 or 1 in the device's numbering.
            timeout: seconds in which the device must answer, above 0.
        """

class I2CModule_async(Packet_async, I2CBased):
    """Ports of an I2C bus whose master is the device."""
    async def _checkI2CPinState_async(self, port: int, allow_state: list[str]) -> None:
        """Raises I2CPortNotAvaliableError unless all lines of the port are in an allowed mode.

        Args:
            port: port in the device's numbering.
            allow_state: modes that are allowed.
        """
    def __init__(self, I2C_dict: dict[int, list[tuple[int, int]]]) -> None:
        """Sets the resources of the model.

        Args:
            I2C_dict: ports, each with its lines as digital port and pin.
        """
    async def I2C_open_async(self, port: int) -> int:
        """Opens a port and takes its lines.

        Args:
            port: port of the bus.
        """
    async def I2C_setClockRate_async(self, port: int, mode: int) -> int:
        """Sets the clock.

        Args:
            port: port of the bus.
            mode: 0: 100 kHz, 1: 400 kHz, 2: 1 MHz, 3: 3.4 MHz.
        """
    async def I2C_read_async(self, port: int, read_address: int, bytes_to_read: int) -> list[int]:
        """Reads from a chip.

        Args:
            port: port of the bus.
            read_address: address on the bus, 0 to 255.
            bytes_to_read: number of bytes, 0 to 255.
        """
    async def I2C_write_async(self, port: int, write_address: int, write_data: list[int]) -> int:
        """Writes to a chip.

        Args:
            port: port of the bus.
            write_address: address on the bus, 0 to 255.
            write_data: at most 255 bytes.
        """
    async def I2C_close_async(self, port: int) -> int:
        """Closes a port and frees its lines.

        Args:
            port: port of the bus.
        """
    async def I2C_reset_async(self, port: int) -> int:
        """Resets a port to its initial settings.

        Args:
            port: port of the bus.
        """
    async def I2C_setAddressSize_async(self, port: int, mode: int) -> int:
        """Sets the size of addresses.

        Args:
            port: port of the bus.
            mode: size of addresses, 0 or 1 in the device's numbering.
        """

class SPIBased:
    """Ports of an SPI bus whose master is the device."""
    SPI_dict: dict[int, list[tuple[int, int]]]
    def _checkSPIPort(self, port: int) -> None:
        """Raises SPIPortNotAvaliableError unless the model has the port.

        Args:
            port: port as the device counts it.
        """
    def _SPI_getPinMapPort(self, SPI_port: int) -> list[int]:
        """Lists the digital ports of a port's lines.

        Args:
            SPI_port: port as the device counts it.
        """
    def SPI_getPinMap(self) -> dict[int, list[tuple[int, int]]]:
        """Returns which ports there are, and their lines."""
    def _checkSPIDataSize(self, mode: int) -> None:
        """Raises SPIDataSizeNotVaildError unless `mode` is 0 or 1.

        Args:
            mode: size of the data, 0 or 1 in the device's numbering.
        """
    def _checkSPIFirstBit(self, mode: int) -> None:
        """Raises SPIFirstBitNotVaildError unless `mode` is 0 or 1.

        Args:
            mode: which bit comes first, 0 or 1 in the device's numbering.
        """
    def _checkSPIMode(self, mode: int) -> None:
        """Raises SPIModeNotVaildError unless `mode` is 0, 1, 2 or 3.

        Args:
            mode: SPI mode 0 to 3: polarity, then phase.
        """
    def _checkSPIPrescaler(self, prescaler: int) -> None:
        """Raises SPIPrescalerNotVaildError unless `prescaler` is 2, 4, 8, 16, 32, 64, 128 or 256.

        Args:
            prescaler: divider of the clock: 2, 4, 8, 16, 32, 64, 128 or 256.
        """

class SPIModule(Packet, SPIBased):
    """Ports of an SPI bus whose master is the device."""
    def _checkSPIPinState(self, port: int, allow_state: list[str], timeout: float = 3) -> None:
        """Raises SPIPortNotAvaliableError unless all lines of the port are in an allowed mode.

        Args:
            port: port in the device's numbering.
            allow_state: modes that are allowed.
            timeout: seconds in which the device must answer, above 0.
        """
    def __init__(self, SPI_dict: dict[int, list[tuple[int, int]]]) -> None:
        """Sets the resources of the model.

        Args:
            SPI_dict: ports, each with its lines as digital port and pin.
        """
    def SPI_open(self, port: int, timeout: float = 3) -> int:
        """Opens a port and takes its lines.

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """
    def SPI_setMode(self, port: int, mode: int, timeout: float = 3) -> int:
        """Sets polarity and phase.

        Args:
            port: port of the bus.
            mode: SPI mode 0 to 3: polarity, then phase.
            timeout: seconds in which the device must answer, above 0.
        """
    def SPI_read(self, port: int, bytes_to_read: int, timeout: float = 3) -> list[int]:
        """Reads bytes.

        Args:
            port: port of the bus.
            bytes_to_read: number of bytes, 0 to 255.
            timeout: seconds in which the device must answer, above 0.
        """
    def SPI_write(self, port: int, write_data: list[int], timeout: float = 3) -> int:
        """Writes bytes.

        Args:
            port: port of the bus.
            write_data: at most 255 bytes.
            timeout: seconds in which the device must answer, above 0.
        """
    def SPI_readAndWrite(self, port: int, write_data: list[int], timeout: float = 3) -> list[int]:
        """Writes bytes, and reads as many at the same time.

        Args:
            port: port of the bus.
            write_data: at most 255 bytes.
            timeout: seconds in which the device must answer, above 0.
        """
    def SPI_close(self, port: int, timeout: float = 3) -> int:
        """Closes a port and frees its lines.

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """
    def SPI_reset(self, port: int, timeout: float = 3) -> int:
        """Resets a port to its initial settings.

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """
    def SPI_setDataSize(self, port: int, mode: int, timeout: float = 3) -> int:
        """Sets the size of the data.

        Args:
            port: port of the bus.
            mode: size of the data, 0 or 1 in the device's numbering.
            timeout: seconds in which the device must answer, above 0.
        """
    def SPI_setFirstBit(self, port: int, mode: int, timeout: float = 3) -> int:
        """Sets which bit comes first.

        Args:
            port: port of the bus.
            mode: which bit comes first, 0 or 1 in the device's numbering.
            timeout: seconds in which the device must answer, above 0.
        """
    def SPI_setPrescaler(self, port: int, prescaler: int, timeout: float = 3) -> int:
        """Sets the divider of the clock.

        Args:
            port: port of the bus.
            prescaler: divider of the clock: 2, 4, 8, 16, 32, 64, 128 or 256.
            timeout: seconds in which the device must answer, above 0.
        """
    def _SPI_setCPOL(self, port: int, polarity: int, timeout: float = 3) -> int:
        """Sets the polarity of the clock.

        Args:
            port: port of the bus.
            polarity: 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _SPI_setCPHA(self, port: int, phase: int, timeout: float = 3) -> int:
        """Sets the phase of the clock.

        Args:
            port: port of the bus.
            phase: 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """

class SPIModule_async(Packet_async, SPIBased):
    """Ports of an SPI bus whose master is the device."""
    async def _checkSPIPinState_async(self, port: int, allow_state: list[str]) -> None:
        """Raises SPIPortNotAvaliableError unless all lines of the port are in an allowed mode.

        Args:
            port: port in the device's numbering.
            allow_state: modes that are allowed.
        """
    def __init__(self, SPI_dict: dict[int, list[tuple[int, int]]]) -> None:
        """Sets the resources of the model.

        Args:
            SPI_dict: ports, each with its lines as digital port and pin.
        """
    async def SPI_open_async(self, port: int) -> int:
        """Opens a port and takes its lines.

        Args:
            port: port of the bus.
        """
    async def SPI_setMode_async(self, port: int, mode: int) -> int:
        """Sets polarity and phase.

        Args:
            port: port of the bus.
            mode: SPI mode 0 to 3: polarity, then phase.
        """
    async def SPI_read_async(self, port: int, bytes_to_read: int) -> list[int]:
        """Reads bytes.

        Args:
            port: port of the bus.
            bytes_to_read: number of bytes, 0 to 255.
        """
    async def SPI_write_async(self, port: int, write_data: list[int]) -> int:
        """Writes bytes.

        Args:
            port: port of the bus.
            write_data: at most 255 bytes.
        """
    async def SPI_readAndWrite_async(self, port: int, write_data: list[int]) -> list[int]:
        """Writes bytes, and reads as many at the same time.

        Args:
            port: port of the bus.
            write_data: at most 255 bytes.
        """
    async def SPI_close_async(self, port: int) -> int:
        """Closes a port and frees its lines.

        Args:
            port: port of the bus.
        """
    async def SPI_reset_async(self, port: int) -> int:
        """Resets a port to its initial settings.

        Args:
            port: port of the bus.
        """
    async def SPI_setDataSize_async(self, port: int, mode: int) -> int:
        """Sets the size of the data.

        Args:
            port: port of the bus.
            mode: size of the data, 0 or 1 in the device's numbering.
        """
    async def SPI_setFirstBit_async(self, port: int, mode: int) -> int:
        """Sets which bit comes first.

        Args:
            port: port of the bus.
            mode: which bit comes first, 0 or 1 in the device's numbering.
        """
    async def SPI_setPrescaler_async(self, port: int, prescaler: int) -> int:
        """Sets the divider of the clock.

        Args:
            port: port of the bus.
            prescaler: divider of the clock: 2, 4, 8, 16, 32, 64, 128 or 256.
        """
    async def _SPI_setCPOL_async(self, port: int, polarity: int) -> int:
        """Sets the polarity of the clock.

        Args:
            port: port of the bus.
            polarity: 0 or 1.
        """
    async def _SPI_setCPHA_async(self, port: int, phase: int) -> int:
        """Sets the phase of the clock.

        Args:
            port: port of the bus.
            phase: 0 or 1.
        """

class UARTBased:
    """UART ports of the device, as a bridge."""
    uart_dict: dict[int, list[tuple[int, int]]]
    uart_killed: bool
    uart_open_flag: bool
    uart_p1_data_queue: Fifo
    uart_p1_signal_queue: RowFifo
    uart_p1_lock: Gate
    uart_p1_stream_thread: DeviceThread
    uart_p2_data_queue: Fifo
    uart_p2_signal_queue: RowFifo
    uart_p2_lock: Gate
    uart_p2_stream_thread: DeviceThread
    def _checkUARTPort(self, port: int) -> None:
        """Raises UARTPortNotAvaliableError unless the model has the port.

        Args:
            port: port as the device counts it.
        """
    def _UART_getPinMapPort(self, UART_port: int) -> list[int]:
        """Lists the digital ports of a port's lines.

        Args:
            UART_port: port as the device counts it.
        """
    def UART_getPinMap(self) -> dict[int, list[tuple[int, int]]]:
        """Returns which ports there are, and their lines."""
    def _checkUARTBaudRate(self, baud_rate: int) -> None:
        """Raises UARTBaudRateNotSupportError if the speed is above 400000.

        Args:
            baud_rate: speed in bits per second, at most 400000.
        """
    def _checkUARTDataBit(self, mode: int) -> None:
        """Raises UARTDataBitNotSupportError unless `mode` is 0 or 1.

        Args:
            mode: 0 or 1.
        """
    def _checkUARTParityMode(self, mode: int) -> None:
        """Raises UARTParityNotSupportError unless `mode` is 0, 1, 2 or 3.

        Args:
            mode: 0 to 3.
        """
    def _checkUARTNumStopBitMode(self, mode: int) -> None:
        """Raises UARTStopBitNotSupportError unless `mode` is 0, 1, 2 or 3.

        Args:
            mode: 0 to 3.
        """
    def _checkUARTDataLength(self, data: str | list[str]) -> None:
        """Raises UARTExceedMaxLengthError if there are more than 50 characters.

        Args:
            data: what is to be written.
        """
    def __init__(self) -> None:
        """Sets the fields that both forms share."""
    def _UARTStreamThread(self, lock: Gate, data_queue: Fifo, signal_queue: RowFifo) -> None:
        """Body of a decoder thread: turns frames into bytes until `_UART_free`.

        Args:
            lock: gate that each round passes.
            data_queue: queue of frames.
            signal_queue: queue of bytes.
        """
    def _UART_free(self) -> None:
        """Ends the decoder threads for good."""

class UARTModule(Packet, UARTBased):
    """UART ports of the device, as a bridge."""
    def _checkUARTPinState(self, port: int, allow_state: list[str], timeout: float = 3) -> None:
        """Raises UARTPortNotAvaliableError unless all lines of the port are in an allowed mode.

        Args:
            port: port in the device's numbering.
            allow_state: modes that are allowed.
            timeout: seconds in which the device must answer, above 0.
        """
    def __init__(self, uart_dict: dict[int, list[tuple[int, int]]]) -> None:
        """Sets the resources of the model.

        Args:
            uart_dict: ports of the UART, each with its lines.
        """
    def UART_open(self, port: int, timeout: float = 3) -> int:
        """Opens a port and takes its lines. The first one opened is read until a port is closed.

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """
    def UART_close(self, port: int, timeout: float = 3) -> int:
        """Closes the port and stops reading on both ports. The blocking form fails, and sends nothing (compatibility note 1).

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """
    def UART_write(self, port: int, write_data: str | list[str], timeout: float = 3) -> int:
        """Writes to the line.

        Args:
            port: port of the bus.
            write_data: at most 50 characters with codes up to 255, as text or as a list of single ones.
            timeout: seconds in which the device must answer, above 0.
        """
    def _UART_startReading(self, port: int) -> int:
        """Starts the stream of what arrives on the line; there is no reply.

        Args:
            port: port of the bus.
        """
    def UART_read(self, port: int, bytes_to_read: int, delay: float = 0.005) -> list[str]:
        """Takes what has arrived on the line.

        Args:
            port: port of the bus.
            bytes_to_read: most bytes to take.
            delay: seconds to wait for that many, once; the awaitable form never waits.
        """
    def UART_readBytes(self, port: int, bytes_to_read: int, delay: float = 0.005) -> bytes:
        """Takes what has arrived on the line, as bytes.

        Args:
            port: port of the bus.
            bytes_to_read: most bytes to take.
            delay: seconds to wait for that many, once; the awaitable form never waits.
        """
    def _UART_stopReading(self, port: int, timeout: float = 3) -> int:
        """Stops the stream.

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """
    def UART_reset(self, port: int, timeout: float = 3) -> int:
        """Resets a port to its initial settings.

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """
    def UART_setBaudRate(self, port: int, baud_rate: int, timeout: float = 3) -> int:
        """Sets the speed.

        Args:
            port: port of the bus.
            baud_rate: speed in bits per second, 0 to 400000.
            timeout: seconds in which the device must answer, above 0.
        """
    def UART_setDataBit(self, port: int, mode: int, timeout: float = 3) -> int:
        """Sets the number of data bits.

        Args:
            port: port of the bus.
            mode: 0 or 1 in the device's numbering.
            timeout: seconds in which the device must answer, above 0.
        """
    def UART_setParity(self, port: int, mode: int, timeout: float = 3) -> int:
        """Sets the parity.

        Args:
            port: port of the bus.
            mode: 0 to 3 in the device's numbering.
            timeout: seconds in which the device must answer, above 0.
        """
    def UART_setNumStopBit(self, port: int, mode: int, timeout: float = 3) -> int:
        """Sets the number of stop bits.

        Args:
            port: port of the bus.
            mode: 0 to 3 in the device's numbering.
            timeout: seconds in which the device must answer, above 0.
        """

class UARTModule_async(Packet_async, UARTBased):
    """UART ports of the device, as a bridge."""
    async def _checkUARTPinState_async(self, port: int, allow_state: list[str]) -> None:
        """Raises UARTPortNotAvaliableError unless all lines of the port are in an allowed mode.

        Args:
            port: port in the device's numbering.
            allow_state: modes that are allowed.
        """
    def __init__(self, uart_dict: dict[int, list[tuple[int, int]]]) -> None:
        """Sets the resources of the model.

        Args:
            uart_dict: ports of the UART, each with its lines.
        """
    async def UART_open_async(self, port: int) -> int:
        """Opens a port and takes its lines. The first one opened is read until a port is closed.

        Args:
            port: port of the bus.
        """
    async def UART_close_async(self, port: int) -> int:
        """Closes the port and stops reading on both ports. The blocking form fails, and sends nothing (compatibility note 1).

        Args:
            port: port of the bus.
        """
    async def UART_write_async(self, port: int, write_data: str | list[str]) -> int:
        """Writes to the line.

        Args:
            port: port of the bus.
            write_data: at most 50 characters with codes up to 255, as text or as a list of single ones.
        """
    async def _UART_startReading_async(self, port: int) -> int:
        """Starts the stream of what arrives on the line; there is no reply.

        Args:
            port: port of the bus.
        """
    async def UART_read_async(self, port: int, bytes_to_read: int, delay: float = 0.005) -> list[str]:
        """Takes what has arrived on the line.

        Args:
            port: port of the bus.
            bytes_to_read: most bytes to take.
            delay: seconds to wait for that many, once; the awaitable form never waits.
        """
    async def UART_readBytes_async(self, port: int, bytes_to_read: int, delay: float = 0.005) -> bytes:
        """Takes what has arrived on the line, as bytes.

        Args:
            port: port of the bus.
            bytes_to_read: most bytes to take.
            delay: seconds to wait for that many, once; the awaitable form never waits.
        """
    async def _UART_stopReading_async(self, port: int) -> int:
        """Stops the stream.

        Args:
            port: port of the bus.
        """
    async def UART_reset_async(self, port: int) -> int:
        """Resets a port to its initial settings.

        Args:
            port: port of the bus.
        """
    async def UART_setBaudRate_async(self, port: int, baud_rate: int) -> int:
        """Sets the speed.

        Args:
            port: port of the bus.
            baud_rate: speed in bits per second, 0 to 400000.
        """
    async def UART_setDataBit_async(self, port: int, mode: int) -> int:
        """Sets the number of data bits.

        Args:
            port: port of the bus.
            mode: 0 or 1 in the device's numbering.
        """
    async def UART_setParity_async(self, port: int, mode: int) -> int:
        """Sets the parity.

        Args:
            port: port of the bus.
            mode: 0 to 3 in the device's numbering.
        """
    async def UART_setNumStopBit_async(self, port: int, mode: int) -> int:
        """Sets the number of stop bits.

        Args:
            port: port of the bus.
            mode: 0 to 3 in the device's numbering.
        """

class CANFrame:
    """A frame of a CAN bus. Frames with the same identifier, flags and data are equal."""
    def __init__(self, id_: int, extended_id: bool = False, remote: bool = False, data: Sequence[int] = ()) -> None:
        """Makes a frame. Values that are not bytes are kept, and fail when converted to bytes.

        Args:
            id_: identifier, 11 bits, or 29 where `extended_id`.
            extended_id: whether the identifier has 29 bits.
            remote: whether it is a remote frame.
            data: bytes; they are filled with zeros, and cut, to 8.
        """
    def setID(self) -> None:
        """Updates `id_in_list` and `frame_in_list` from the other fields."""
    def regularizeData(self, data: Sequence[int]) -> list[int]:
        """Pads or cuts to 8 entries.

        Args:
            data: any number of bytes.
        """
    id: int
    """Identifier. Call `setID` after a change."""
    extended_id: bool
    """Whether the identifier has 29 bits. Call `setID` after a change."""
    remote: bool
    """Whether it is a remote frame. Call `setID` after a change."""
    data: list[int]
    """The 8 bytes. Call `setID` after a change."""
    id_in_list: list[int]
    """The identifier with its flags as the 4 bytes of the wire."""
    frame_in_list: list[int]
    """The 12 bytes of the wire: `id_in_list` and `data`."""
    def toMessage(self) -> Any:
        """The frame as a message of the package `can`, 8 bytes long."""
    def __eq__(self, other: object) -> bool:
        """Whether two frames have the same content."""
    def __hash__(self) -> int:
        """Hashes the content."""
    def __reduce__(self) -> tuple[Any, ...]:
        """For the modules copy and pickle."""
    def __setstate__(self, state: dict[str, Any]) -> None:
        """For the modules copy and pickle.

        Args:
            state: fields by name.
        """
    def __str__(self) -> str:
        """The frame as text."""
    def __repr__(self) -> str:
        """The frame as text."""
    @classmethod
    def fromU8List(cls, u8_list: Sequence[int]) -> Self:
        """Makes a frame of the bytes of the wire.

        Args:
            u8_list: 12 bytes of the wire; fewer for less data; two are enough for an 11-bit identifier without data.
        """
    @classmethod
    def fromMessage(cls, message: Any) -> Self:
        """Makes a frame of a message of the package `can`.

        Args:
            message: a can.Message.
        """

class CANBased:
    """A node of a CAN bus."""
    can_dict: dict[int, list[tuple[int, int]]]
    can_killed: bool
    can_open_flag: bool
    can_data_queue: Fifo
    can_frame_queue: RowFifo
    can_lock: Gate
    can_stream_thread: DeviceThread
    def _checkCANPort(self, port: int) -> None:
        """Raises CANPortNotAvaliableError unless the model has the port.

        Args:
            port: port as the device counts it.
        """
    def _CAN_getPinMapPort(self, CAN_port: int) -> list[int]:
        """Lists the digital ports of a port's lines.

        Args:
            CAN_port: port as the device counts it.
        """
    def CAN_getPort(self) -> list[int]:
        """Returns which ports there are."""
    def _checkCANSpeed(self, speed: int) -> None:
        """Raises CANSpeedNotVaildError unless `speed` is 0, 1, 2 or 3.

        Args:
            speed: 0 to 3.
        """
    def _checkCANDataRangeAndLength(self, data: list[int]) -> None:
        """Raises CANDataLengthNotVaildError for more than 8 entries, InputDataNotInRangeError unless all are bytes.

        Args:
            data: bytes of a frame.
        """
    def __init__(self) -> None:
        """Sets the fields that both forms share."""
    def _CANStreamThread(self, queue_: Fifo) -> None:
        """Body of the decoder thread: turns records into frames until `_CAN_free`.

        Args:
            queue_: queue of records.
        """
    def _CAN_free(self) -> None:
        """Ends the decoder thread for good."""
    @staticmethod
    def _checkCANTXIndex(mode: int) -> None:
        """Raises CANTXNotVaildError unless `mode` is 0, 1 or 2.

        Args:
            mode: 0 to 2.
        """
    @staticmethod
    def _checkCANTXPriority(mode: int) -> None:
        """Raises CANTXPriorityNotVaildError unless `mode` is 0, 1, 2 or 3.

        Args:
            mode: 0 to 3.
        """

class CANModule(Packet, CANBased):
    """A node of a CAN bus."""
    def _checkCANPinState_(self, port: int, allow_state: list[str], timeout: float = 3) -> None:
        """Raises CANPortNotAvaliableError unless all lines of the port are in an allowed mode.

        Args:
            port: port in the device's numbering.
            allow_state: modes that are allowed.
            timeout: seconds in which the device must answer, above 0.
        """
    def __init__(self, can_dict: dict[int, list[tuple[int, int]]]) -> None:
        """Sets the resources of the model.

        Args:
            can_dict: ports of the CAN, each with its lines.
        """
    def CAN_open(self, port: int, timeout: float = 3) -> int:
        """Opens a port and takes its lines.

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """
    def CAN_start(self, port: int, timeout: float = 3) -> int:
        """Joins the bus and starts the stream of its frames. There is no reply, yet the blocking form waits for one (compatibility note 22).

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """
    def CAN_close(self, port: int, timeout: float = 3) -> int:
        """Leaves the bus, closes a port and frees its lines.

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """
    def CAN_write(self, port: int, id_: int, data: list[int], remote: bool = False, extended_id: bool = False, timeout: float = 3) -> int:
        """Sends a frame; it always has 8 bytes.

        Args:
            port: port of the bus.
            id_: identifier, 11 bits, or 29 where `extended_id`.
            data: at most 8 bytes; ignored for a remote frame.
            remote: whether it is for remote frames.
            extended_id: whether the identifier has 29 bits.
            timeout: seconds in which the device must answer, above 0.
        """
    def CAN_setRXFilterOrMask(self, port: int, index: int, id_: int, remote: bool, extended_id: bool, timeout: float = 3) -> int:
        """Sets a filter, or a mask of the identifier's bits that filters compare.

        Args:
            port: port of the bus.
            index: filter or mask, in the device's numbering.
            id_: identifier, 11 bits, or 29 where `extended_id`.
            remote: whether it is for remote frames.
            extended_id: whether the identifier has 29 bits.
            timeout: seconds in which the device must answer, above 0.
        """
    def CAN_read(self, port: int, num_frames: int, delay: float = 0.005) -> list[CANFrame]:
        """Takes received frames.

        Args:
            port: port of the bus.
            num_frames: most frames to take.
            delay: seconds to wait for that many, once; the awaitable form never waits.
        """
    def CAN_stop(self, port: int, timeout: float = 3) -> int:
        """Leaves the bus.

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """
    def CAN_setSpeed(self, port: int, speed_mode: int, timeout: float = 3) -> int:
        """Sets the speed of the bus.

        Args:
            port: port of the bus.
            speed_mode: 0 to 3 in the device's numbering.
            timeout: seconds in which the device must answer, above 0.
        """
    def _CAN_setEnableInterrupt(self, port: int, status: bool, timeout: float = 3) -> int:
        """Turns the controller's interrupts on or off.

        Args:
            port: port of the bus.
            status: whether it is on.
            timeout: seconds in which the device must answer, above 0.
        """
    def _CAN_setTXPriority(self, port: int, tx_mode: int, priority_mode: int, timeout: float = 3) -> int:
        """Sets the priority of a transmit buffer.

        Args:
            port: port of the bus.
            tx_mode: transmit buffer, 0 to 2.
            priority_mode: 0 to 3.
            timeout: seconds in which the device must answer, above 0.
        """
    def _CAN_setRXRollover(self, port: int, status: bool, timeout: float = 3) -> int:
        """Turns the rollover of a full receive buffer to the next one on or off.

        Args:
            port: port of the bus.
            status: whether it is on.
            timeout: seconds in which the device must answer, above 0.
        """
    def CAN_setRXFilteringOn(self, port: int, on_off: bool, timeout: float = 3) -> int:
        """Turns filtering on or off.

        Args:
            port: port of the bus.
            on_off: whether frames are filtered.
            timeout: seconds in which the device must answer, above 0.
        """
    def _CAN_getInterrupts(self, port: int, timeout: float = 3) -> list[int]:
        """Reads the controller's interrupts.

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """
    def _CAN_getErrors(self, port: int, timeout: float = 3) -> list[int]:
        """Reads the error counters.

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """
    def _CAN_getCounters(self, port: int, timeout: float = 3) -> list[int]:
        """Reads the device's counters.

        Args:
            port: port of the bus.
            timeout: seconds in which the device must answer, above 0.
        """

class CANModule_async(Packet_async, CANBased):
    """A node of a CAN bus."""
    async def _checkCANPinState_async(self, port: int, allow_state: list[str]) -> None:
        """Raises CANPortNotAvaliableError unless all lines of the port are in an allowed mode.

        Args:
            port: port in the device's numbering.
            allow_state: modes that are allowed.
        """
    def __init__(self, can_dict: dict[int, list[tuple[int, int]]]) -> None:
        """Sets the resources of the model.

        Args:
            can_dict: ports of the CAN, each with its lines.
        """
    async def CAN_open_async(self, port: int) -> int:
        """Opens a port and takes its lines.

        Args:
            port: port of the bus.
        """
    async def CAN_start_async(self, port: int) -> int:
        """Joins the bus and starts the stream of its frames. There is no reply, yet the blocking form waits for one (compatibility note 22).

        Args:
            port: port of the bus.
        """
    async def CAN_close_async(self, port: int) -> int:
        """Leaves the bus, closes a port and frees its lines.

        Args:
            port: port of the bus.
        """
    async def CAN_write_async(self, port: int, id_: int, data: list[int], remote: bool = False, extended_id: bool = False) -> int:
        """Sends a frame; it always has 8 bytes.

        Args:
            port: port of the bus.
            id_: identifier, 11 bits, or 29 where `extended_id`.
            data: at most 8 bytes; ignored for a remote frame.
            remote: whether it is for remote frames.
            extended_id: whether the identifier has 29 bits.
        """
    async def CAN_setRXFilterOrMask_async(self, port: int, index: int, id_: int, remote: bool, extended_id: bool) -> int:
        """Sets a filter, or a mask of the identifier's bits that filters compare.

        Args:
            port: port of the bus.
            index: filter or mask, in the device's numbering.
            id_: identifier, 11 bits, or 29 where `extended_id`.
            remote: whether it is for remote frames.
            extended_id: whether the identifier has 29 bits.
        """
    async def CAN_read_async(self, port: int, num_frames: int, delay: float = 0.005) -> list[CANFrame]:
        """Takes received frames.

        Args:
            port: port of the bus.
            num_frames: most frames to take.
            delay: seconds to wait for that many, once; the awaitable form never waits.
        """
    async def CAN_stop_async(self, port: int) -> int:
        """Leaves the bus.

        Args:
            port: port of the bus.
        """
    async def CAN_setSpeed_async(self, port: int, speed_mode: int) -> int:
        """Sets the speed of the bus.

        Args:
            port: port of the bus.
            speed_mode: 0 to 3 in the device's numbering.
        """
    async def _CAN_setEnableInterrupt_async(self, port: int, status: bool) -> int:
        """Turns the controller's interrupts on or off.

        Args:
            port: port of the bus.
            status: whether it is on.
        """
    async def _CAN_setTXPriority_async(self, port: int, tx_mode: int, priority_mode: int) -> int:
        """Sets the priority of a transmit buffer.

        Args:
            port: port of the bus.
            tx_mode: transmit buffer, 0 to 2.
            priority_mode: 0 to 3.
        """
    async def _CAN_setRXRollover_async(self, port: int, status: bool) -> int:
        """Turns the rollover of a full receive buffer to the next one on or off.

        Args:
            port: port of the bus.
            status: whether it is on.
        """
    async def CAN_setRXFilteringOn_async(self, port: int, on_off: bool) -> int:
        """Turns filtering on or off.

        Args:
            port: port of the bus.
            on_off: whether frames are filtered.
        """
    async def _CAN_getInterrupts_async(self, port: int) -> list[int]:
        """Reads the controller's interrupts.

        Args:
            port: port of the bus.
        """
    async def _CAN_getErrors_async(self, port: int) -> list[int]:
        """Reads the error counters.

        Args:
            port: port of the bus.
        """
    async def _CAN_getCounters_async(self, port: int) -> list[int]:
        """Reads the device's counters.

        Args:
            port: port of the bus.
        """

class SampleBlock:
    """Rows of samples in volts as one contiguous block of doubles, (rows, columns)."""
    @property
    def shape(self) -> tuple[int, int]:
        """Numbers of rows and columns."""
    def __len__(self) -> int:
        """Number of rows."""
    def __getitem__(self, key: Any) -> Any:
        """A row as a list of floats, rows as a block that shares the memory, or one value.

        Args:
            key: a row, a slice of consecutive rows, or a row and a column.
        """
    def __iter__(self) -> Iterator[list[float]]:
        """Iterates over the rows as lists of floats."""
    def tolist(self) -> list[list[float]]:
        """The rows as lists of floats."""
    def __array__(self, dtype: Any = None, copy: bool | None = None) -> Any:
        """The rows as a NumPy array. NumPy is imported only here.

        Args:
            dtype: dtype of the array; None for doubles.
            copy: whether to copy; None for only if necessary.
        """
    def __repr__(self) -> str:
        """Shape, rate and place in the stream."""
    def _repr_html_(self) -> str:
        """The first and last rows as a table, for notebooks."""
    def __reduce_ex__(self, protocol: Any) -> tuple[Any, ...]:
        """For the modules copy and pickle.

        Args:
            protocol: as the modules copy and pickle give it.
        """
    @property
    def rate(self) -> float:
        """Rows per second, as reported by the device when streaming was opened; NaN before that."""
    @property
    def start(self) -> float:
        """Time of the first row of the stream, in seconds since 1970 like time.time(). It is the host's clock when the first frame was decoded, less the time that its rows took, and never before AI_startStreaming: the device sends no time. NaN until data has arrived."""
    @property
    def first_row(self) -> int:
        """Number of the first row since AI_startStreaming, counting dropped rows; over several chip selects, that of the first."""
    @property
    def dropped_before(self) -> int:
        """Rows dropped between the previous block and this one because a queue was full; over several chip selects, the maximum."""
    @property
    def units(self) -> str:
        """Unit of the values, "V"."""
    @property
    def channels(self) -> tuple[int, ...]:
        """Channel of each column; on the chassis those of chip select n begin at n times their number."""
    def __buffer__(self, flags: int, /) -> memoryview: ...

class SampleStream:
    """Iterator over a stream's blocks, made by AI_stream."""
    def __init__(self, box: Any, port: int, rows: int) -> None:
        """Sends nothing to the device yet.

        Args:
            box: device object.
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            rows: rows of a block, 1 to 1000000.
        """
    def __iter__(self) -> Self:
        """Itself."""
    def __aiter__(self) -> Self:
        """Itself."""
    def __del__(self) -> None:
        """Closes it."""
    def __next__(self) -> SampleBlock:
        """Waits for the next block."""
    async def __anext__(self) -> SampleBlock:
        """Waits for the next block."""
    def close(self) -> None:
        """Ends the stream; a second call does nothing."""
    async def aclose(self) -> None:
        """Ends the stream; a second call does nothing."""
    def __enter__(self) -> Self:
        """Itself."""
    async def __aenter__(self) -> Self:
        """Itself."""
    def __exit__(self, *failure: object) -> None:
        """Ends the stream.

        Args:
            *failure: error that ends the block of statements.
        """
    async def __aexit__(self, *failure: object) -> None:
        """Ends the stream.

        Args:
            *failure: error that ends the block of statements.
        """

class AIUnion:
    """Base of every analog input."""
    ai_dict: dict[int, list[int]]
    def _checkAIPort(self, port: int) -> None:
        """Raises AIPortNotAvaliableError unless the model has the port.

        Args:
            port: port as the device counts it.
        """
    def _convertAITriggerModeToMask(self, mode: int) -> int:
        """Trigger mode as the device's mask.

        Args:
            mode: trigger mode, 0 to 6.
        """
    def AI_open(self, port: int, timeout: float = 3) -> int:
        """Opens a port and starts decoding.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def AI_close(self, port: int, timeout: float = 3) -> int:
        """Closes a port and stops decoding. Rows already decoded stay readable.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """

class AIUnion_async:
    """Base of every analog input."""
    def _checkAIPort(self, port: int) -> None:
        """Raises AIPortNotAvaliableError unless the model has the port.

        Args:
            port: port as the device counts it.
        """
    def _convertAITriggerModeToMask(self, mode: int) -> int:
        """Trigger mode as the device's mask.

        Args:
            mode: trigger mode, 0 to 6.
        """
    async def AI_open_async(self, port: int) -> int:
        """Opens a port and starts decoding.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """
    async def AI_close_async(self, port: int) -> int:
        """Closes a port and stops decoding. Rows already decoded stay readable.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """

class AIBased(AIUnion):
    """Base of every streaming analog input."""
    ai_max_rate: int
    ai_echo_cmd: int
    ai_strm_cmd: int
    ai_mode: int
    chip_select_p0: list[int]
    chip_select_p1: list[int]
    chip_select_p3: list[int]
    ai_num_channels: int
    ai_ratio: float
    ai_killed: bool
    ai_data_queue_list: list[Fifo]
    ai_signal_queue_list: list[RowFifo]
    ai_lock: Gate
    ai_stream_thread: DeviceThread
    ai_open_flag: bool
    def _checkAIMode(self, mode: int) -> None:
        """Raises AIModeNotAvaliableError unless `mode` is 0, 1 or 2.

        Args:
            mode: 0, 1 or 2.
        """
    def _ckeckAISamplingRate(self, port: int, sampling_rate: float) -> None:
        """Raises AIRateNotVaildError if the rate is above the model's limit.

        Args:
            port: port as the device counts it.
            sampling_rate: rows per second in Hz; the limit depends on the model and on what is enabled.
        """
    def AI_setMode(self, port: int, mode: int, timeout: float = 3) -> int:
        """Sets the mode of acquisition.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            mode: 0 on demand, 1 a number of rows, 2 continuous.
            timeout: seconds in which the device must answer, above 0.
        """
    def AI_setNumSamples(self, port: int, num_samples: int, timeout: float = 3) -> int:
        """Sets how many rows an acquisition of mode 1 has.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            num_samples: rows of one acquisition, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def AI_setSamplingRate(self, port: int, sampling_rate: float, timeout: float = 3) -> int:
        """Sets the rate.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            sampling_rate: rows per second in Hz; the limit depends on the model and on what is enabled.
            timeout: seconds in which the device must answer, above 0.
        """
    def _AI_changePortToIndex(self, port: int, cs: int) -> int:
        """Index of a pair of queues in the lists.

        Args:
            port: 0, 1 or 3.
            cs: chip select.
        """
    def _AIStreamThread(self, data_queue_list: list[Fifo], signal_queue_list: list[RowFifo]) -> None:
        """Body of the decoder thread: turns frames into rows until `_AI_free`.

        Args:
            data_queue_list: queues of frames.
            signal_queue_list: queues of rows.
        """
    def _AI_free(self) -> None:
        """Ends the decoder thread for good."""
    def AI_openStreaming(self, port: int, timeout: float = 3) -> list[int | float]:
        """Prepares streaming. The port is not counted from 1 here (compatibility note 19).

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def AI_startStreaming(self, port: int, timeout: float = 3) -> int:
        """Starts streaming; there is no reply.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def AI_closeStreaming(self, port: int, timeout: float = 3) -> int:
        """Stops streaming. Rows already received stay readable.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def _AI_readBufferStatus(self, port: int, timeout: float = 3) -> list[int]:
        """Reads the state of the device's buffer.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def _AI_clearBufferStatus(self, port: int, timeout: float = 3) -> int:
        """Clears the counters of the device's buffer.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def _AI_getCounter(self, port: int, timeout: float = 3) -> list[int]:
        """Reads the device's counters.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """

class AIBased_async(AIUnion_async):
    """Base of every streaming analog input."""
    def _checkAIMode(self, mode: int) -> None:
        """Raises AIModeNotAvaliableError unless `mode` is 0, 1 or 2.

        Args:
            mode: 0, 1 or 2.
        """
    def _ckeckAISamplingRate(self, port: int, sampling_rate: float) -> None:
        """Raises AIRateNotVaildError if the rate is above the model's limit.

        Args:
            port: port as the device counts it.
            sampling_rate: rows per second in Hz; the limit depends on the model and on what is enabled.
        """
    async def AI_setMode_async(self, port: int, mode: int) -> int:
        """Sets the mode of acquisition.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            mode: 0 on demand, 1 a number of rows, 2 continuous.
        """
    async def AI_setNumSamples_async(self, port: int, num_samples: int) -> int:
        """Sets how many rows an acquisition of mode 1 has.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            num_samples: rows of one acquisition, 0 to 4294967295.
        """
    async def AI_setSamplingRate_async(self, port: int, sampling_rate: float) -> int:
        """Sets the rate.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            sampling_rate: rows per second in Hz; the limit depends on the model and on what is enabled.
        """
    def _AI_changePortToIndex(self, port: int, cs: int) -> int:
        """Index of a pair of queues in the lists.

        Args:
            port: 0, 1 or 3.
            cs: chip select.
        """
    def _AIStreamThread(self, data_queue_list: list[Fifo], signal_queue_list: list[RowFifo]) -> None:
        """Body of the decoder thread: turns frames into rows until `_AI_free`.

        Args:
            data_queue_list: queues of frames.
            signal_queue_list: queues of rows.
        """
    def _AI_free(self) -> None:
        """Ends the decoder thread for good."""
    async def AI_openStreaming_async(self, port: int) -> list[int | float]:
        """Prepares streaming. The port is not counted from 1 here (compatibility note 19).

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """
    async def AI_startStreaming_async(self, port: int) -> int:
        """Starts streaming; there is no reply.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """
    async def AI_closeStreaming_async(self, port: int) -> int:
        """Stops streaming. Rows already received stay readable.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """
    async def _AI_readBufferStatus_async(self, port: int) -> list[int]:
        """Reads the state of the device's buffer.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """
    async def _AI_clearBufferStatus_async(self, port: int) -> int:
        """Clears the counters of the device's buffer.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """
    async def _AI_getCounter_async(self, port: int) -> list[int]:
        """Reads the device's counters.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """

class AIModule(Packet, AIBased):
    """Analog inputs of 16 bits."""
    def _AI_getPinMapPort(self, ai_port: int) -> list[int]:
        """Lists the digital ports of a port's lines.

        Args:
            ai_port: port as the device counts it.
        """
    def _checkAIPinState(self, port: int, allow_state: list[str], timeout: float = 3) -> None:
        """Raises AIPortNotAvaliableError unless all lines of the port are in an allowed mode.

        Args:
            port: port in the device's numbering.
            allow_state: modes that are allowed.
            timeout: seconds in which the device must answer, above 0.
        """
    def __init__(self, ai_dict: dict[int, list[int]], ai_max_rate: int, ai_ratio: float, ai_num_channels: int, ai_variable: bool = False) -> None:
        """Sets the resources of the model.

        Args:
            ai_dict: ports of the analog input.
            ai_max_rate: highest rate of the model in Hz.
            ai_ratio: volts per count.
            ai_num_channels: channels of a row of each chip select.
            ai_variable: whether the number of channels can be chosen.
        """
    def _checkAIChannel(self, channel: int) -> None:
        """Raises AIChannelNotAvaliableError unless the model has so many channels.

        Args:
            channel: number of channels, 1 to the model's.
        """
    def _checkAIChipSelect(self, cs: int) -> None:
        """Raises AICSNotAvaliableError unless the model has the chip select.

        Args:
            cs: chip select, 0 to 2.
        """
    def _checkAITriggerMode(self, mode: int) -> None:
        """Raises AITriggerModeNotAvaliableError unless `mode` is 0, 1, 2, 3, 4, 5 or 6.

        Args:
            mode: trigger mode, 0 to 6.
        """
    def AI_readOnDemand(self, port: int, timeout: float = 3) -> list[float]:
        """Reads all channels once.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def AI_enableChannel(self, port: int, channel: int, timeout: float = 3) -> int:
        """Chooses how many channels are read.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            channel: number of channels, 1 to the model's, counted from channel 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def AI_enableCS(self, slot: int, chip_select: list[int], timeout: float = 3) -> int:
        """Chooses the chip selects of a slot.

        Args:
            slot: slot of the chassis, 1, 2 or 4.
            chip_select: chip selects, 0 to 2.
            timeout: seconds in which the device must answer, above 0.
        """
    def AI_setTriggerMode(self, port: int, mode: int, timeout: float = 3) -> int:
        """Chooses what starts an acquisition.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            mode: trigger mode, 0 or 1; up to 6 on USB models.
            timeout: seconds in which the device must answer, above 0.
        """
    def _AI_getDataRTC(self, port: int, timeout: float = 3) -> list[float]:
        """Reads the samples that the device took with its clock.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def AI_readStreaming(self, port: int, num_samples: int, delay: float = 0.005) -> list[list[float]]:
        """Takes streamed rows.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            num_samples: most rows to read.
            delay: longest wait for that many rows in seconds; with 0 nothing is read.
        """
    def AI_readStreamingBlock(self, port: int, num_samples: int, delay: float = 0.005) -> SampleBlock:
        """Takes streamed rows as one block of doubles.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            num_samples: most rows to read.
            delay: longest wait for that many rows in seconds; with 0 nothing is read.
        """
    def AI_readStreamingInto(self, port: int, buffer: Any, delay: float = 0.005) -> int:
        """Writes as many streamed rows into the caller's memory as fit.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            buffer: writable, C-contiguous buffer of doubles, such as numpy.empty((rows, columns)).
            delay: longest wait for that many rows in seconds; with 0 nothing is read.
        """
    def AI_stream(self, port: int, rows: int) -> SampleStream:
        """Iterates over the blocks of a new run with `for` or `async for`: the port streams from the first block until the loop ends. Set mode, rate and channels before.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            rows: rows of a block, 1 to 1000000.
        """
    def AI_getBacklog(self, port: int) -> int:
        """Returns how many rows wait to be read.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """
    def AI_getDroppedRows(self, port: int) -> int:
        """Returns how many rows were dropped because a queue was full.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """

class AIModule_async(Packet_async, AIBased_async):
    """Analog inputs of 16 bits."""
    def _AI_getPinMapPort(self, ai_port: int) -> list[int]:
        """Lists the digital ports of a port's lines.

        Args:
            ai_port: port as the device counts it.
        """
    async def _checkAIPinState_async(self, port: int, allow_state: list[str]) -> None:
        """Raises AIPortNotAvaliableError unless all lines of the port are in an allowed mode.

        Args:
            port: port in the device's numbering.
            allow_state: modes that are allowed.
        """
    def __init__(self, ai_dict: dict[int, list[int]], ai_max_rate: int, ai_ratio: float, ai_num_channels: int, ai_variable: bool = False) -> None:
        """Sets the resources of the model.

        Args:
            ai_dict: ports of the analog input.
            ai_max_rate: highest rate of the model in Hz.
            ai_ratio: volts per count.
            ai_num_channels: channels of a row of each chip select.
            ai_variable: whether the number of channels can be chosen.
        """
    def _checkAIChannel(self, channel: int) -> None:
        """Raises AIChannelNotAvaliableError unless the model has so many channels.

        Args:
            channel: number of channels, 1 to the model's.
        """
    def _checkAIChipSelect(self, cs: int) -> None:
        """Raises AICSNotAvaliableError unless the model has the chip select.

        Args:
            cs: chip select, 0 to 2.
        """
    def _checkAITriggerMode(self, mode: int) -> None:
        """Raises AITriggerModeNotAvaliableError unless `mode` is 0, 1, 2, 3, 4, 5 or 6.

        Args:
            mode: trigger mode, 0 to 6.
        """
    async def AI_readOnDemand_async(self, port: int) -> list[float]:
        """Reads all channels once.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """
    async def AI_enableChannel_async(self, port: int, channel: int) -> int:
        """Chooses how many channels are read.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            channel: number of channels, 1 to the model's, counted from channel 0.
        """
    async def AI_enableCS_async(self, slot: int, chip_select: list[int]) -> int:
        """Chooses the chip selects of a slot.

        Args:
            slot: slot of the chassis, 1, 2 or 4.
            chip_select: chip selects, 0 to 2.
        """
    async def AI_setTriggerMode_async(self, port: int, mode: int) -> int:
        """Chooses what starts an acquisition.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            mode: trigger mode, 0 or 1; up to 6 on USB models.
        """
    async def _AI_getDataRTC_async(self, port: int) -> list[float]:
        """Reads the samples that the device took with its clock.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """
    async def AI_readStreaming_async(self, port: int, num_samples: int, delay: float = 0.005) -> list[list[float]]:
        """Takes streamed rows.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            num_samples: most rows to read.
            delay: longest wait for that many rows in seconds; with 0 nothing is read.
        """
    async def AI_readStreamingBlock_async(self, port: int, num_samples: int, delay: float = 0.005) -> SampleBlock:
        """Takes streamed rows as one block of doubles.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            num_samples: most rows to read.
            delay: longest wait for that many rows in seconds; with 0 nothing is read.
        """
    async def AI_readStreamingInto_async(self, port: int, buffer: Any, delay: float = 0.005) -> int:
        """Writes as many streamed rows into the caller's memory as fit.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            buffer: writable, C-contiguous buffer of doubles, such as numpy.empty((rows, columns)).
            delay: longest wait for that many rows in seconds; with 0 nothing is read.
        """
    def AI_stream(self, port: int, rows: int) -> SampleStream:
        """Iterates over the blocks of a new run with `for` or `async for`: the port streams from the first block until the loop ends. Set mode, rate and channels before.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            rows: rows of a block, 1 to 1000000.
        """
    def AI_getBacklog(self, port: int) -> int:
        """Returns how many rows wait to be read.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """
    def AI_getDroppedRows(self, port: int) -> int:
        """Returns how many rows were dropped because a queue was full.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """

class AI24BitStreamingModule(Packet, AIBased):
    """Analog inputs of 24 bits with streaming."""
    def __init__(self, ai_dict: dict[int, list[int]], ai_max_rate: int, ai_ratio: float, ai_num_channels: int) -> None:
        """Sets the resources of the model.

        Args:
            ai_dict: ports of the analog input.
            ai_max_rate: highest rate of the model in Hz.
            ai_ratio: volts per count.
            ai_num_channels: channels of a row.
        """
    def AI_readOnDemand(self, port: int, timeout: float = 3) -> list[float]:
        """Reads all channels once.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def AI_readStreaming(self, port: int, num_samples: int, delay: float = 0.005) -> list[list[float]]:
        """Takes streamed rows.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            num_samples: most rows to read.
            delay: longest wait for that many rows in seconds; with 0 nothing is read.
        """
    def AI_readStreamingBlock(self, port: int, num_samples: int, delay: float = 0.005) -> SampleBlock:
        """Takes streamed rows as one block of doubles.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            num_samples: most rows to read.
            delay: longest wait for that many rows in seconds; with 0 nothing is read.
        """
    def AI_readStreamingInto(self, port: int, buffer: Any, delay: float = 0.005) -> int:
        """Writes as many streamed rows into the caller's memory as fit.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            buffer: writable, C-contiguous buffer of doubles, such as numpy.empty((rows, columns)).
            delay: longest wait for that many rows in seconds; with 0 nothing is read.
        """
    def AI_stream(self, port: int, rows: int) -> SampleStream:
        """Iterates over the blocks of a new run with `for` or `async for`: the port streams from the first block until the loop ends. Set mode, rate and channels before.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            rows: rows of a block, 1 to 1000000.
        """
    def AI_getBacklog(self, port: int) -> int:
        """Returns how many rows wait to be read.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """
    def AI_getDroppedRows(self, port: int) -> int:
        """Returns how many rows were dropped because a queue was full.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """

class AI24BitStreamingModule_async(Packet_async, AIBased_async):
    """Analog inputs of 24 bits with streaming."""
    def __init__(self, ai_dict: dict[int, list[int]], ai_max_rate: int, ai_ratio: float, ai_num_channels: int) -> None:
        """Sets the resources of the model.

        Args:
            ai_dict: ports of the analog input.
            ai_max_rate: highest rate of the model in Hz.
            ai_ratio: volts per count.
            ai_num_channels: channels of a row.
        """
    async def AI_readOnDemand_async(self, port: int) -> list[float]:
        """Reads all channels once.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """
    async def AI_readStreaming_async(self, port: int, num_samples: int, delay: float = 0.005) -> list[list[float]]:
        """Takes streamed rows.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            num_samples: most rows to read.
            delay: longest wait for that many rows in seconds; with 0 nothing is read.
        """
    async def AI_readStreamingBlock_async(self, port: int, num_samples: int, delay: float = 0.005) -> SampleBlock:
        """Takes streamed rows as one block of doubles.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            num_samples: most rows to read.
            delay: longest wait for that many rows in seconds; with 0 nothing is read.
        """
    async def AI_readStreamingInto_async(self, port: int, buffer: Any, delay: float = 0.005) -> int:
        """Writes as many streamed rows into the caller's memory as fit.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            buffer: writable, C-contiguous buffer of doubles, such as numpy.empty((rows, columns)).
            delay: longest wait for that many rows in seconds; with 0 nothing is read.
        """
    def AI_stream(self, port: int, rows: int) -> SampleStream:
        """Iterates over the blocks of a new run with `for` or `async for`: the port streams from the first block until the loop ends. Set mode, rate and channels before.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            rows: rows of a block, 1 to 1000000.
        """
    def AI_getBacklog(self, port: int) -> int:
        """Returns how many rows wait to be read.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """
    def AI_getDroppedRows(self, port: int) -> int:
        """Returns how many rows were dropped because a queue was full.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """

class AI24BitModule(Packet, AIUnion):
    """Inputs of currents and voltages, on demand."""
    ai_dict: dict[int, list[int]]
    def __init__(self, ai_dict: dict[int, list[int]]) -> None:
        """Sets the resources of the model.

        Args:
            ai_dict: ports of the analog input.
        """
    def _checkAIMode(self, mode: int) -> None:
        """Raises AIModeNotAvaliableError unless `mode` is 0, 1 or 2.

        Args:
            mode: 0, 1 or 2.
        """
    def _ckeckAISamplingRate(self, port: int, sampling_rate: float) -> None:
        """Raises AIRateNotVaildError if the rate is above the model's limit.

        Args:
            port: port as the device counts it.
            sampling_rate: rows per second in Hz; the limit depends on the model and on what is enabled.
        """
    def AI_setMode(self, port: int, mode: int, timeout: float = 3) -> int:
        """Sets the mode of acquisition.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            mode: 0 on demand, 1 a number of rows, 2 continuous.
            timeout: seconds in which the device must answer, above 0.
        """
    def AI_setNumSamples(self, port: int, num_samples: int, timeout: float = 3) -> int:
        """Sets how many rows an acquisition of mode 1 has.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            num_samples: rows of one acquisition, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def AI_setSamplingRate(self, port: int, sampling_rate: float, timeout: float = 3) -> int:
        """Sets the rate.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            sampling_rate: rows per second in Hz; the limit depends on the model and on what is enabled.
            timeout: seconds in which the device must answer, above 0.
        """
    def AI_readOnDemand(self, port: int, timeout: float = 3) -> list[float]:
        """Reads all channels once.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """

class AI24BitModule_async(Packet_async, AIUnion_async):
    """Inputs of currents and voltages, on demand."""
    def __init__(self, ai_dict: dict[int, list[int]]) -> None:
        """Sets the resources of the model.

        Args:
            ai_dict: ports of the analog input.
        """
    def _checkAIMode(self, mode: int) -> None:
        """Raises AIModeNotAvaliableError unless `mode` is 0, 1 or 2.

        Args:
            mode: 0, 1 or 2.
        """
    def _ckeckAISamplingRate(self, port: int, sampling_rate: float) -> None:
        """Raises AIRateNotVaildError if the rate is above the model's limit.

        Args:
            port: port as the device counts it.
            sampling_rate: rows per second in Hz; the limit depends on the model and on what is enabled.
        """
    async def AI_setMode_async(self, port: int, mode: int) -> int:
        """Sets the mode of acquisition.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            mode: 0 on demand, 1 a number of rows, 2 continuous.
        """
    async def AI_setNumSamples_async(self, port: int, num_samples: int) -> int:
        """Sets how many rows an acquisition of mode 1 has.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            num_samples: rows of one acquisition, 0 to 4294967295.
        """
    async def AI_setSamplingRate_async(self, port: int, sampling_rate: float) -> int:
        """Sets the rate.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
            sampling_rate: rows per second in Hz; the limit depends on the model and on what is enabled.
        """
    async def AI_readOnDemand_async(self, port: int) -> list[float]:
        """Reads all channels once.

        Args:
            port: port of the analog input; on the chassis the slot, 1, 2 or 4.
        """

class AOBased:
    """Analog outputs."""
    ao_dict: dict[int, list[Any]]
    ao_volt_min: float
    ao_volt_max: float
    ao_channel: int
    ao_rate: int
    def _checkAOPort(self, port: int) -> None:
        """Raises AOPortNotAvaliableError unless the model has the port.

        Args:
            port: port as the device counts it.
        """
    def _AO_getPinMapPort(self, ao_port: int) -> list[int]:
        """Lists the digital ports of a port's lines.

        Args:
            ao_port: port as the device counts it.
        """
    def _checkAOChannel(self, channel: int) -> None:
        """Raises AOChannelNotAvaliableError unless the model has the channel.

        Args:
            channel: channel, counted from 0.
        """
    def _checkAOForm(self, form: int) -> None:
        """Raises AOFormNotAvaliableError unless `form` is 1, 2 or 3.

        Args:
            form: 1, 2 or 3.
        """
    def _checkAOMode(self, mode: int) -> None:
        """Raises AOModeNotVaildError unless `mode` is 0, 1 or 2.

        Args:
            mode: 0, 1 or 2.
        """
    def _checkAOSpan(self, span: int) -> None:
        """Raises AOSpanNotVaildError unless `span` is 0, 1, 2, 3 or 4.

        Args:
            span: 0 to 4.
        """
    def _ckeckAOSamplingRate(self, rate: float) -> None:
        """Raises AORateNotVaildError if the rate is above the model's limit.

        Args:
            rate: rate in Hz.
        """
    def _checkAONumOfValues(self, value: int) -> None:
        """Raises InputDataNotInRangeError unless one push takes that many values.

        Args:
            value: number of values, at most 13.
        """
    def AO_getPort(self) -> list[int]:
        """Returns which ports there are."""

class AOModule(Packet, AOBased):
    """Analog outputs."""
    def _checkAOPinState(self, port: int, allow_state: list[str], timeout: float = 3) -> None:
        """Raises AOPortNotAvaliableError unless all lines of the port are in an allowed mode.

        Args:
            port: port in the device's numbering.
            allow_state: modes that are allowed.
            timeout: seconds in which the device must answer, above 0.
        """
    ao_max_rate: int
    """Highest rate in Hz: `ao_rate`."""
    def __init__(self, ao_dict: dict[int, list[Any]], ao_volt_min: float, ao_volt_max: float, ao_channel: int, ao_rate: int) -> None:
        """Sets the resources of the model.

        Args:
            ao_dict: ports of the analog output, each with its channels or lines.
            ao_volt_min: lowest voltage.
            ao_volt_max: highest voltage.
            ao_channel: number of channels.
            ao_rate: highest rate in Hz.
        """
    def AO_open(self, port: int, timeout: float = 3) -> int:
        """Opens a port, whose lines must be idle.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def AO_close(self, port: int, timeout: float = 3) -> int:
        """Closes a port.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def AO_writeOneChannel(self, port: int, channel: int, value: float, timeout: float = 3) -> int:
        """Sets the voltage of a channel.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            channel: channel, counted from 0.
            value: voltage, between `ao_volt_min` and `ao_volt_max`; 32-bit float.
            timeout: seconds in which the device must answer, above 0.
        """
    def AO_writeAllChannels(self, port: int, value_list: list[float], timeout: float = 3) -> int:
        """Sets the voltages of all channels at once.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            value_list: voltages; a shorter list is filled, a longer one cut.
            timeout: seconds in which the device must answer, above 0.
        """

class AOModule_async(Packet_async, AOBased):
    """Analog outputs."""
    async def _checkAOPinState_async(self, port: int, allow_state: list[str]) -> None:
        """Raises AOPortNotAvaliableError unless all lines of the port are in an allowed mode.

        Args:
            port: port in the device's numbering.
            allow_state: modes that are allowed.
        """
    ao_max_rate: int
    """Highest rate in Hz: `ao_rate`."""
    def __init__(self, ao_dict: dict[int, list[Any]], ao_volt_min: float, ao_volt_max: float, ao_channel: int, ao_rate: int) -> None:
        """Sets the resources of the model.

        Args:
            ao_dict: ports of the analog output, each with its channels or lines.
            ao_volt_min: lowest voltage.
            ao_volt_max: highest voltage.
            ao_channel: number of channels.
            ao_rate: highest rate in Hz.
        """
    async def AO_open_async(self, port: int) -> int:
        """Opens a port, whose lines must be idle.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
        """
    async def AO_close_async(self, port: int) -> int:
        """Closes a port.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
        """
    async def AO_writeOneChannel_async(self, port: int, channel: int, value: float) -> int:
        """Sets the voltage of a channel.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            channel: channel, counted from 0.
            value: voltage, between `ao_volt_min` and `ao_volt_max`; 32-bit float.
        """
    async def AO_writeAllChannels_async(self, port: int, value_list: list[float]) -> int:
        """Sets the voltages of all channels at once.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            value_list: voltages; a shorter list is filled, a longer one cut.
        """

class AOStreamingModule(AOModule):
    """Analog outputs that generate waveforms."""
    ao_dict: dict[int, list[Any]]
    ao_volt_min: float
    ao_volt_max: float
    ao_channel: int
    ao_rate: int
    def __init__(self, ao_dict: dict[int, list[Any]], ao_volt_min: float, ao_volt_max: float, ao_channel: int, ao_rate: int) -> None:
        """Sets the resources of the model.

        Args:
            ao_dict: ports of the analog output, each with its channels or lines.
            ao_volt_min: lowest voltage.
            ao_volt_max: highest voltage.
            ao_channel: number of channels.
            ao_rate: highest rate in Hz.
        """
    def AO_openStreaming(self, port: int, timeout: float = 3) -> list[int | float]:
        """Prepares the generation of waveforms.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def AO_closeStreaming(self, port: int, timeout: float = 3) -> int:
        """Ends the generation of waveforms.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def _AO_stopStreaming(self, port: int, timeout: float = 3) -> int:
        """Stops the waveforms.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def AO_getValues(self, port: int, timeout: float = 3) -> list[float]:
        """Reads the present voltages.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def _AO_getMode(self, port: int, timeout: float = 3) -> int:
        """Reads the mode.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def _AO_getState(self, port: int, timeout: float = 3) -> int:
        """Reads the state.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def _AO_getCounters(self, port: int, timeout: float = 3) -> list[int]:
        """Reads the device's counters.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def _AO_initialBuffer(self, port: int, timeout: float = 3) -> list[int]:
        """Empties the buffer for pushed samples.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def AO_setForm(self, port: int, channel: int, form: int, timeout: float = 3) -> int:
        """Chooses the form of a channel's wave.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            channel: channel, counted from 0.
            form: form of the wave, 1, 2 or 3.
            timeout: seconds in which the device must answer, above 0.
        """
    def AO_setFormParam(self, port: int, channel: int, amplitude: float, offset: float, frequency: float, phase: float = 0, duty_cycle: float = 0.5, timeout: float = 3) -> int:
        """Sets the parameters of a channel's wave.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            channel: channel, counted from 0.
            amplitude: in volts.
            offset: in volts.
            frequency: in Hz.
            phase: in the device's unit.
            duty_cycle: part of a period.
            timeout: seconds in which the device must answer, above 0.
        """
    def AO_setMode(self, port: int, mode: int, timeout: float = 3) -> int:
        """Sets the mode.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            mode: 0, 1 or 2.
            timeout: seconds in which the device must answer, above 0.
        """
    def AO_setNumSamples(self, port: int, num_samples: int, timeout: float = 3) -> int:
        """Sets how many samples are generated.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            num_samples: 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def AO_setSamplingRate(self, port: int, sampling_rate: float, timeout: float = 3) -> int:
        """Sets the rate.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            sampling_rate: in Hz, at most `ao_rate`.
            timeout: seconds in which the device must answer, above 0.
        """
    def _AO_setSpan(self, port: int, span: int, timeout: float = 3) -> int:
        """Sets the span.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            span: 0 to 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def AO_startStreaming(self, port: int) -> int:
        """Starts the waveforms; there is no reply.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
        """
    def AO_setEnableChannels(self, port: int, channel_list: list[int], timeout: float = 3) -> int:
        """Chooses the channels that generate.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            channel_list: channels, counted from 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def _AO_pushToBuffer(self, port: int, num_of_val: int, value_list: Sequence[float], timeout: float = 3) -> int:
        """Pushes samples to the device's buffer.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            num_of_val: number of values, 0 to 13.
            value_list: voltages.
            timeout: seconds in which the device must answer, above 0.
        """

class AOStreamingModule_async(AOModule_async):
    """Analog outputs that generate waveforms."""
    def __init__(self, ao_dict: dict[int, list[Any]], ao_volt_min: float, ao_volt_max: float, ao_channel: int, ao_rate: int) -> None:
        """Sets the resources of the model.

        Args:
            ao_dict: ports of the analog output, each with its channels or lines.
            ao_volt_min: lowest voltage.
            ao_volt_max: highest voltage.
            ao_channel: number of channels.
            ao_rate: highest rate in Hz.
        """
    async def AO_openStreaming_async(self, port: int) -> list[int | float]:
        """Prepares the generation of waveforms.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
        """
    async def AO_closeStreaming_async(self, port: int) -> int:
        """Ends the generation of waveforms.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
        """
    async def _AO_stopStreaming_async(self, port: int) -> int:
        """Stops the waveforms.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
        """
    async def AO_getValues_async(self, port: int) -> list[float]:
        """Reads the present voltages.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
        """
    async def _AO_getMode_async(self, port: int) -> int:
        """Reads the mode.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
        """
    async def _AO_getState_async(self, port: int) -> int:
        """Reads the state.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
        """
    async def _AO_getCounters_async(self, port: int) -> list[int]:
        """Reads the device's counters.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
        """
    async def _AO_initialBuffer_async(self, port: int) -> list[int]:
        """Empties the buffer for pushed samples.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
        """
    async def AO_setForm_async(self, port: int, channel: int, form: int) -> int:
        """Chooses the form of a channel's wave.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            channel: channel, counted from 0.
            form: form of the wave, 1, 2 or 3.
        """
    async def AO_setFormParam_async(self, port: int, channel: int, amplitude: float, offset: float, frequency: float, phase: float = 0, duty_cycle: float = 0.5) -> int:
        """Sets the parameters of a channel's wave.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            channel: channel, counted from 0.
            amplitude: in volts.
            offset: in volts.
            frequency: in Hz.
            phase: in the device's unit.
            duty_cycle: part of a period.
        """
    async def AO_setMode_async(self, port: int, mode: int) -> int:
        """Sets the mode.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            mode: 0, 1 or 2.
        """
    async def AO_setNumSamples_async(self, port: int, num_samples: int) -> int:
        """Sets how many samples are generated.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            num_samples: 0 to 4294967295.
        """
    async def AO_setSamplingRate_async(self, port: int, sampling_rate: float) -> int:
        """Sets the rate.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            sampling_rate: in Hz, at most `ao_rate`.
        """
    async def _AO_setSpan_async(self, port: int, span: int) -> int:
        """Sets the span.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            span: 0 to 4.
        """
    async def AO_startStreaming_async(self, port: int) -> int:
        """Starts the waveforms; there is no reply.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
        """
    async def AO_setEnableChannels_async(self, port: int, channel_list: list[int]) -> int:
        """Chooses the channels that generate.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            channel_list: channels, counted from 0.
        """
    async def _AO_pushToBuffer_async(self, port: int, num_of_val: int, value_list: Sequence[float]) -> int:
        """Pushes samples to the device's buffer.

        Args:
            port: port of the analog output; on the chassis the slot, 1, 2 or 4.
            num_of_val: number of values, 0 to 13.
            value_list: voltages.
        """

class DataLogger:
    """Writes rows to a CSV file from a thread of its own. Rows queued before a file is open are written once one is."""
    f_handle: Any
    writer_csv: Any
    filename: str | None
    save_data_lock: Gate
    save_data_queue: ItemFifo
    save_data_thread: DeviceThread
    queue_timeout: int
    killed: bool
    def __init__(self) -> None:
        """Starts the thread, which waits for a file."""
    def Logger_openFile(self, filename: str, clear_old: bool = False, verbose: bool = True) -> None:
        """Opens a file once all rows queued for the previous one are written.

        Args:
            filename: name of the file.
            clear_old: whether to empty the file; else rows are added.
            verbose: whether to print a line.
        """
    def Logger_writeHeader(self, header: Sequence[object]) -> None:
        """Queues a row of titles.

        Args:
            header: titles of the columns.
        """
    def Logger_writeList(self, value_list: Sequence[object]) -> None:
        """Queues a row.

        Args:
            value_list: values of one row.
        """
    def Logger_write2DList(self, value_mat: Any) -> None:
        """Queues rows.

        Args:
            value_mat: rows: a list of lists, anything like it, or a SampleBlock, which stays as it is until the thread writes it.
        """
    def Logger_writeValue(self, value: object) -> None:
        """Queues a row of one value.

        Args:
            value: the value.
        """
    def Logger_flush(self) -> None:
        """Waits until everything queued is in the file, and flushes the file."""
    async def Logger_flush_async(self) -> None:
        """Waits until everything queued is in the file, and flushes the file."""
    def Logger_getLostWrites(self) -> int:
        """Returns how many queued matrices could not be written."""
    def _saveStreamingDataThread(self, queue_: Any) -> None:
        """Body of the thread: passes the gate, takes a matrix and writes it, until the object is killed.

        Args:
            queue_: the queue to take matrices from.
        """
    def _Logger_close(self, verbose: bool = True) -> None:
        """Writes the queued rows, closes the file and ends the thread for good.

        Args:
            verbose: without effect.
        """
    def __reduce_ex__(self, protocol: object) -> Any:
        """Raises TypeError: threads of this process use it."""

class ThermalBased:
    """Temperature sensors."""
    thermal_dict: dict[int, list[Any]]
    def _checkThermalChipSelect(self, cs: int) -> None:
        """Raises ThermalChipSelectNotAvaliableError unless the model has the sensor.

        Args:
            cs: 0 or 1; up to 6 on `TarnThermo`.
        """
    def _checkThermalFilterMode(self, mode: int) -> None:
        """Raises ThermalModeNotVaildError unless `mode` is 0 to 1.

        Args:
            mode: 0 or 1.
        """
    def _checkThermalSamplingMode(self, mode: int) -> None:
        """Raises ThermalModeNotVaildError unless `mode` is 0 to 4.

        Args:
            mode: 0 to 4.
        """
    def _checkThermalTCType(self, tc_type: int) -> None:
        """Raises ThermalTypeNotVaildError unless `tc_type` is 0 to 7.

        Args:
            tc_type: 0 to 7.
        """
    def _checkThermalRTDType(self, rtd_type: int) -> None:
        """Raises ThermalTypeNotVaildError unless `rtd_type` is 0 to 1.

        Args:
            rtd_type: 0 or 1.
        """
    def _Thermal_getPinMapPort(self, thermal_port: int) -> list[int]:
        """Lists the digital ports of a port's lines.

        Args:
            thermal_port: port as the device counts it.
        """
    def _checkThermalPort(self, port: int) -> None:
        """Raises ThermalPortNotAvaliableError unless the model has the port.

        Args:
            port: port of the sensors.
        """
    def Thermal_getPinMap(self) -> dict[int, list[Any]]:
        """Returns which ports there are."""

class ThermalModule(Packet, ThermalBased):
    """Temperature sensors."""
    def _checkThermalPinState(self, port: int, allow_state: list[str], timeout: float = 3) -> None:
        """Raises ThermalPortNotAvaliableError unless all lines of the port are in an allowed mode.

        Args:
            port: port in the device's numbering.
            allow_state: modes that are allowed.
            timeout: seconds in which the device must answer, above 0.
        """
    def __init__(self, thermal_dict: dict[int, list[Any]]) -> None:
        """Sets the resources of the model.

        Args:
            thermal_dict: ports of the sensors, each with its channels or lines.
        """
    def Thermal_open(self, port: int, timeout: float = 3) -> int:
        """Opens a port, whose lines must be idle or digital.

        Args:
            port: port of the sensors.
            timeout: seconds in which the device must answer, above 0.
        """
    def Thermal_getStatus(self, port: int, channel: int, timeout: float = 3) -> bytes:
        """Reads the state of a sensor.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            timeout: seconds in which the device must answer, above 0.
        """
    def Thermal_close(self, port: int, timeout: float = 3) -> int:
        """Closes a port.

        Args:
            port: port of the sensors.
            timeout: seconds in which the device must answer, above 0.
        """
    def Thermal_readSensor(self, port: int, channel: int, timeout: float = 3) -> float:
        """Reads the temperature of a sensor.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Thermal_setNoiseFilter(self, port: int, channel: int, mode: int, timeout: float = 3) -> int:
        """Chooses the noise filter of a sensor.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            mode: 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Thermal_readOffset(self, port: int, channel: int, timeout: float = 3) -> float:
        """Reads the offset in use.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Thermal_loadOffset(self, port: int, channel: int, timeout: float = 3) -> float:
        """Reads the saved offset.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Thermal_writeOffset(self, port: int, channel: int, temperature: float, timeout: float = 3) -> int:
        """Sets the offset in use.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            temperature: degrees, 32-bit float.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Thermal_saveOffset(self, port: int, channel: int, temperature: float, timeout: float = 3) -> int:
        """Saves an offset.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            temperature: degrees, 32-bit float.
            timeout: seconds in which the device must answer, above 0.
        """

class ThermalModule_async(Packet_async, ThermalBased):
    """Temperature sensors."""
    async def _checkThermalPinState_async(self, port: int, allow_state: list[str]) -> None:
        """Raises ThermalPortNotAvaliableError unless all lines of the port are in an allowed mode.

        Args:
            port: port in the device's numbering.
            allow_state: modes that are allowed.
        """
    def __init__(self, thermal_dict: dict[int, list[Any]]) -> None:
        """Sets the resources of the model.

        Args:
            thermal_dict: ports of the sensors, each with its channels or lines.
        """
    async def Thermal_open_async(self, port: int) -> int:
        """Opens a port, whose lines must be idle or digital.

        Args:
            port: port of the sensors.
        """
    async def Thermal_getStatus_async(self, port: int, channel: int) -> bytes:
        """Reads the state of a sensor.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
        """
    async def Thermal_close_async(self, port: int) -> int:
        """Closes a port.

        Args:
            port: port of the sensors.
        """
    async def Thermal_readSensor_async(self, port: int, channel: int) -> float:
        """Reads the temperature of a sensor.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
        """
    async def _Thermal_setNoiseFilter_async(self, port: int, channel: int, mode: int) -> int:
        """Chooses the noise filter of a sensor.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            mode: 0 or 1.
        """
    async def _Thermal_readOffset_async(self, port: int, channel: int) -> float:
        """Reads the offset in use.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
        """
    async def _Thermal_loadOffset_async(self, port: int, channel: int) -> float:
        """Reads the saved offset.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
        """
    async def _Thermal_writeOffset_async(self, port: int, channel: int, temperature: float) -> int:
        """Sets the offset in use.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            temperature: degrees, 32-bit float.
        """
    async def _Thermal_saveOffset_async(self, port: int, channel: int, temperature: float) -> int:
        """Saves an offset.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            temperature: degrees, 32-bit float.
        """

class ThermocoupleModule(ThermalModule, ThermalBased):
    """Thermocouples."""
    def Thermal_setType(self, port: int, channel: int, type_: int, timeout: float = 3) -> int:
        """Sets the type of a sensor.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            type_: type of the thermocouple, 0 to 7, in the device's numbering.
            timeout: seconds in which the device must answer, above 0.
        """
    def Thermal_setOverSampling(self, port: int, channel: int, mode: int, timeout: float = 3) -> int:
        """Chooses how many samples make a reading.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            mode: number of samples of a reading, 0 to 4, in the device's numbering.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Thermal_readJunction(self, port: int, channel: int, timeout: float = 3) -> float:
        """Reads the temperature of the cold junction.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Thermal_setJunctionOn(self, port: int, channel: int, status: bool, timeout: float = 3) -> int:
        """Chooses where the temperature of the cold junction comes from.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            status: whether the device measures it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Thermal_writeJunction(self, port: int, channel: int, temperature: float, timeout: float = 3) -> int:
        """Sets the temperature of the cold junction.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            temperature: degrees, 32-bit float.
            timeout: seconds in which the device must answer, above 0.
        """

class ThermocoupleModule_async(ThermalModule_async, ThermalBased):
    """Thermocouples."""
    async def Thermal_setType_async(self, port: int, channel: int, type_: int) -> int:
        """Sets the type of a sensor.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            type_: type of the thermocouple, 0 to 7, in the device's numbering.
        """
    async def Thermal_setOverSampling_async(self, port: int, channel: int, mode: int) -> int:
        """Chooses how many samples make a reading.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            mode: number of samples of a reading, 0 to 4, in the device's numbering.
        """
    async def _Thermal_readJunction_async(self, port: int, channel: int) -> float:
        """Reads the temperature of the cold junction.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
        """
    async def _Thermal_setJunctionOn_async(self, port: int, channel: int, status: bool) -> int:
        """Chooses where the temperature of the cold junction comes from.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            status: whether the device measures it.
        """
    async def _Thermal_writeJunction_async(self, port: int, channel: int, temperature: float) -> int:
        """Sets the temperature of the cold junction.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            temperature: degrees, 32-bit float.
        """

class ThermalResistanceModule(ThermalModule, ThermalBased):
    """Resistance thermometers."""
    def Thermal_setType(self, port: int, channel: int, type_: int, timeout: float = 3) -> int:
        """Sets the type of a sensor.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            type_: type of the resistor, 0 or 1, in the device's numbering.
            timeout: seconds in which the device must answer, above 0.
        """

class ThermalResistanceModule_async(ThermalModule_async, ThermalBased):
    """Resistance thermometers."""
    async def Thermal_setType_async(self, port: int, channel: int, type_: int) -> int:
        """Sets the type of a sensor.

        Args:
            port: port of the sensors.
            channel: sensor of the port, 0 or 1; up to 6 on `TarnThermo`.
            type_: type of the resistor, 0 or 1, in the device's numbering.
        """

class AHRSBased:
    """The inertial unit."""
    ahrs_dict: dict[int, list[int]]
    def _checkAHRSPort(self, port: int) -> None:
        """Raises AHRSPortNotAvaliableError unless the model has the port.

        Args:
            port: port as the device counts it.
        """
    def _checkAHRSMode(self, mode: int) -> None:
        """Raises AHRSModeNotAvaliableError unless `mode` is 0, 1, 2, 3, 4, 5 or 6.

        Args:
            mode: 0 orientation, 1 acceleration, 2 angular velocity, 3 orientation and acceleration, 4 orientation and angular velocity, 5 angular velocity and acceleration, 6 all three.
        """
    def _convertModeToMask(self, mode: int) -> int:
        """Mode as the device's mask.

        Args:
            mode: 0 orientation, 1 acceleration, 2 angular velocity, 3 orientation and acceleration, 4 orientation and angular velocity, 5 angular velocity and acceleration, 6 all three.
        """

class AHRSModule(Packet, AHRSBased):
    """The inertial unit."""
    def __init__(self, ahrs_dict: dict[int, list[int]]) -> None:
        """Sets the resources of the model.

        Args:
            ahrs_dict: ports of the inertial unit.
        """
    def AHRS_open(self, port: int, timeout: float = 3) -> int:
        """Opens the unit and sets its filter's step to 3 ms.

        Args:
            port: port of the inertial unit.
            timeout: seconds in which the device must answer, above 0.
        """
    def AHRS_start(self, port: int, timeout: float = 3) -> int:
        """Starts the filter; there is no reply.

        Args:
            port: port of the inertial unit.
            timeout: seconds in which the device must answer, above 0.
        """
    def AHRS_getEstimate(self, port: int, mode: int, timeout: float = 3) -> list[float]:
        """Reads simultaneous estimates.

        Args:
            port: port of the inertial unit.
            mode: 0 orientation, 1 acceleration, 2 angular velocity, 3 orientation and acceleration, 4 orientation and angular velocity, 5 angular velocity and acceleration, 6 all three.
            timeout: seconds in which the device must answer, above 0.
        """
    def AHRS_stop(self, port: int, timeout: float = 3) -> int:
        """Stops the filter.

        Args:
            port: port of the inertial unit.
            timeout: seconds in which the device must answer, above 0.
        """
    def AHRS_close(self, port: int, timeout: float = 3) -> int:
        """Closes the unit.

        Args:
            port: port of the inertial unit.
            timeout: seconds in which the device must answer, above 0.
        """
    def AHRS_reset(self, port: int, timeout: float = 3) -> int:
        """Restarts the filter.

        Args:
            port: port of the inertial unit.
            timeout: seconds in which the device must answer, above 0.
        """
    def AHRS_getOrientation(self, port: int, timeout: float = 3) -> list[float]:
        """Reads the orientation.

        Args:
            port: port of the inertial unit.
            timeout: seconds in which the device must answer, above 0.
        """
    def AHRS_getOrientation_rad(self, port: int, timeout: float = 3) -> list[float]:
        """Reads the orientation.

        Args:
            port: port of the inertial unit.
            timeout: seconds in which the device must answer, above 0.
        """
    def AHRS_getAcceleration_rad(self, port: int, timeout: float = 3) -> list[float]:
        """Reads the acceleration.

        Args:
            port: port of the inertial unit.
            timeout: seconds in which the device must answer, above 0.
        """
    def AHRS_getAngularVelocity_rad(self, port: int, timeout: float = 3) -> list[float]:
        """Reads the angular velocity.

        Args:
            port: port of the inertial unit.
            timeout: seconds in which the device must answer, above 0.
        """
    def _AHRS_getRawdata(self, port: int, timeout: float = 3) -> list[float]:
        """Reads the sensors.

        Args:
            port: port of the inertial unit.
            timeout: seconds in which the device must answer, above 0.
        """
    def _AHRS_setGeneral(self, port: int, gravity: float, dt: float, z_offset: float, timeout: float = 3) -> int:
        """Sets up the unit.

        Args:
            port: port of the inertial unit.
            gravity: in m/s2.
            dt: seconds between two steps of the filter.
            z_offset: in the device's unit.
            timeout: seconds in which the device must answer, above 0.
        """
    def _AHRS_setSamplingPeriod(self, port: int, sampling_period: float, timeout: float = 3) -> int:
        """Sets the step of the filter, with a gravity of 9.81 and an offset of 0.001.

        Args:
            port: port of the inertial unit.
            sampling_period: seconds between two steps of the filter, 32-bit float.
            timeout: seconds in which the device must answer, above 0.
        """
    def _AHRS_VQF_setTau(self, port: int, accelerator_decay_time: float, magnetometer_decay_time: float, timeout: float = 3) -> int:
        """Sets how long the filter takes to follow a sensor; both forms have this name (compatibility note 18).

        Args:
            port: port of the inertial unit.
            accelerator_decay_time: in seconds.
            magnetometer_decay_time: in seconds.
            timeout: seconds in which the device must answer, above 0.
        """

class AHRSModule_async(Packet_async, AHRSBased):
    """The inertial unit."""
    def __init__(self, ahrs_dict: dict[int, list[int]]) -> None:
        """Sets the resources of the model.

        Args:
            ahrs_dict: ports of the inertial unit.
        """
    async def AHRS_open_async(self, port: int) -> int:
        """Opens the unit and sets its filter's step to 3 ms.

        Args:
            port: port of the inertial unit.
        """
    async def AHRS_start_async(self, port: int) -> int:
        """Starts the filter; there is no reply.

        Args:
            port: port of the inertial unit.
        """
    async def AHRS_getEstimate_async(self, port: int, mode: int) -> list[float]:
        """Reads simultaneous estimates.

        Args:
            port: port of the inertial unit.
            mode: 0 orientation, 1 acceleration, 2 angular velocity, 3 orientation and acceleration, 4 orientation and angular velocity, 5 angular velocity and acceleration, 6 all three.
        """
    async def AHRS_stop_async(self, port: int) -> int:
        """Stops the filter.

        Args:
            port: port of the inertial unit.
        """
    async def AHRS_close_async(self, port: int) -> int:
        """Closes the unit.

        Args:
            port: port of the inertial unit.
        """
    async def AHRS_reset_async(self, port: int) -> int:
        """Restarts the filter.

        Args:
            port: port of the inertial unit.
        """
    async def AHRS_getOrientation_async(self, port: int) -> list[float]:
        """Reads the orientation.

        Args:
            port: port of the inertial unit.
        """
    async def AHRS_getOrientation_rad_async(self, port: int) -> list[float]:
        """Reads the orientation.

        Args:
            port: port of the inertial unit.
        """
    async def AHRS_getAcceleration_rad_async(self, port: int) -> list[float]:
        """Reads the acceleration.

        Args:
            port: port of the inertial unit.
        """
    async def AHRS_getAngularVelocity_rad_async(self, port: int) -> list[float]:
        """Reads the angular velocity.

        Args:
            port: port of the inertial unit.
        """
    async def _AHRS_getRawdata_async(self, port: int) -> list[float]:
        """Reads the sensors.

        Args:
            port: port of the inertial unit.
        """
    async def _AHRS_setGeneral_async(self, port: int, gravity: float, dt: float, z_offset: float) -> int:
        """Sets up the unit.

        Args:
            port: port of the inertial unit.
            gravity: in m/s2.
            dt: seconds between two steps of the filter.
            z_offset: in the device's unit.
        """
    async def _AHRS_setSamplingPeriod_async(self, port: int, sampling_period: float) -> int:
        """Sets the step of the filter, with a gravity of 9.81 and an offset of 0.001.

        Args:
            port: port of the inertial unit.
            sampling_period: seconds between two steps of the filter, 32-bit float.
        """
    async def _AHRS_VQF_setTau(self, port: int, accelerator_decay_time: float, magnetometer_decay_time: float) -> int:
        """Sets how long the filter takes to follow a sensor; both forms have this name (compatibility note 18).

        Args:
            port: port of the inertial unit.
            accelerator_decay_time: in seconds.
            magnetometer_decay_time: in seconds.
        """

class RelayBased:
    """Counters of the relays."""
    def _checkRelayPort(self, port: int) -> None:
        """Raises RelayPortNotAvaliableError unless `port` is 0.

        Args:
            port: port of the relays, 0.
        """
    def _checkRelayindex(self, index: int) -> None:
        """Raises RelayCounterIndexError unless `index` is -1, 0, 1, 2, 3, 4 or 5.

        Args:
            index: relay, 0 to 5; -1 for all.
        """

class RelayModule(Packet, RelayBased):
    """Counters of the relays."""
    def Relay_open(self, port: int, timeout: float = 3) -> int:
        """Checks the port; nothing is sent.

        Args:
            port: port of the relays, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Relay_close(self, port: int, timeout: float = 3) -> int:
        """Checks the port; nothing is sent.

        Args:
            port: port of the relays, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Relay_read(self, port: int, index: int, timeout: float = 3) -> list[int]:
        """Reads how often relays have switched.

        Args:
            port: port of the relays, 0.
            index: relay, 0 to 5; -1 for all.
            timeout: seconds in which the device must answer, above 0.
        """

class RelayModule_async(Packet_async, RelayBased):
    """Counters of the relays."""
    async def Relay_open_async(self, port: int) -> int:
        """Checks the port; nothing is sent.

        Args:
            port: port of the relays, 0.
        """
    async def Relay_close_async(self, port: int) -> int:
        """Checks the port; nothing is sent.

        Args:
            port: port of the relays, 0.
        """
    async def Relay_read_async(self, port: int, index: int) -> list[int]:
        """Reads how often relays have switched.

        Args:
            port: port of the relays, 0.
            index: relay, 0 to 5; -1 for all.
        """

class DPOTBased:
    """Variable resistors."""
    def _checkDPOTPort(self, port: int) -> None:
        """Raises DPOTPortNotAvaliableError unless the port is 0.

        Args:
            port: port of the resistors, 0.
        """
    def _checkDPOTChannelAmount(self, channel: int) -> None:
        """Raises DPOTChannelNotAvaliableError unless `channel` is 0 to 4.

        Args:
            channel: resistor, or number of resistors, 0 to 4.
        """

class DPOTModule(Packet, DPOTBased):
    """Variable resistors."""
    def DPOT_open(self, port: int, timeout: float = 3) -> int:
        """Checks the port; nothing is sent.

        Args:
            port: port of the resistors, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def DPOT_close(self, port: int, timeout: float = 3) -> int:
        """Checks the port; nothing is sent.

        Args:
            port: port of the resistors, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def DPOT_readByChannel(self, port: int, channel: int, timeout: float = 3) -> int:
        """Reads the value of a resistor.

        Args:
            port: port of the resistors, 0.
            channel: resistor, or number of resistors, 0 to 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def DPOT_writeByChannel(self, port: int, channel: int, value: float, timeout: float = 3) -> int:
        """Sets a resistor.

        Args:
            port: port of the resistors, 0.
            channel: resistor, or number of resistors, 0 to 4.
            value: resistance in the device's unit, 32-bit float.
            timeout: seconds in which the device must answer, above 0.
        """
    def DPOT_writeAllChannel(self, port: int, value_list: Sequence[float], timeout: float = 3) -> int:
        """Sets several resistors at once.

        Args:
            port: port of the resistors, 0.
            value_list: up to 4 resistances in the device's unit, from channel 0 on.
            timeout: seconds in which the device must answer, above 0.
        """

class DPOTModule_async(Packet_async, DPOTBased):
    """Variable resistors."""
    async def DPOT_open_async(self, port: int) -> int:
        """Checks the port; nothing is sent.

        Args:
            port: port of the resistors, 0.
        """
    async def DPOT_close_async(self, port: int) -> int:
        """Checks the port; nothing is sent.

        Args:
            port: port of the resistors, 0.
        """
    async def DPOT_readByChannel_async(self, port: int, channel: int) -> int:
        """Reads the value of a resistor.

        Args:
            port: port of the resistors, 0.
            channel: resistor, or number of resistors, 0 to 4.
        """
    async def DPOT_writeByChannel_async(self, port: int, channel: int, value: float) -> int:
        """Sets a resistor.

        Args:
            port: port of the resistors, 0.
            channel: resistor, or number of resistors, 0 to 4.
            value: resistance in the device's unit, 32-bit float.
        """
    async def DPOT_writeAllChannel_async(self, port: int, value_list: Sequence[float]) -> int:
        """Sets several resistors at once.

        Args:
            port: port of the resistors, 0.
            value_list: up to 4 resistances in the device's unit, from channel 0 on.
        """

class Measurement:
    """A record of the 61E+ handheld multimeter, decoded."""
    _MODE: list[str]
    _UNITS: dict[str, dict[str, str]]
    _EXPONENTS: dict[str, int]
    _OVERLOAD: list[str]
    _NCV: list[str]
    _data: dict[str, Any]
    def __init__(self, b: bytes) -> None:
        """Decodes a record.

        Args:
            b: the record, 14 bytes or more.
        """
    def __str__(self) -> str:
        """All values of the record."""
    @property
    def binary(self) -> bytes:
        """the whole record"""
    @property
    def mode(self) -> str:
        """what is measured, a name of `_MODE`"""
    @property
    def range(self) -> str:
        """range, one character"""
    @property
    def display(self) -> str:
        """text of the display without blanks"""
    @property
    def display_decimal(self) -> Decimal | str:
        """number of the display; "Overflow" beyond the range"""
    @property
    def display_unit(self) -> str | None:
        """unit of the display; None where mode and range have none"""
    @property
    def overload(self) -> bool:
        """whether the display shows that the range is exceeded"""
    @property
    def value(self) -> Decimal | str:
        """number without its prefix: its 28 digits rotated by the prefix's exponent (compatibility note 33); "Overflow" beyond the range"""
    @property
    def unit(self) -> str | None:
        """unit without its prefix"""
    @property
    def progress(self) -> int:
        """length of the bar"""
    @property
    def isMax(self) -> bool:
        """whether the greatest value is shown"""
    @property
    def isMin(self) -> bool:
        """whether the least value is shown"""
    @property
    def isHold(self) -> bool:
        """whether the display is held"""
    @property
    def isRel(self) -> bool:
        """whether the value is relative to another one"""
    @property
    def isAuto(self) -> bool:
        """whether the meter chooses its range"""
    @property
    def hasBatteryWarning(self) -> bool:
        """whether the battery is low"""
    @property
    def hasHVWarning(self) -> bool:
        """whether the voltage is dangerous"""
    @property
    def isDC(self) -> bool:
        """whether it is a direct voltage or current"""
    @property
    def isMaxPeak(self) -> bool:
        """whether the greatest peak is shown"""
    @property
    def isMinPeak(self) -> bool:
        """whether the least peak is shown"""
    @property
    def isBarPol(self) -> bool:
        """polarity of the bar"""

class MotionAxis:
    """What the host remembers of one motion axis."""
    acceleration: int
    deceleration: int
    target_position: int
    encoder_position: int
    velocity: int
    velocity_move_direction: int
    jerk: int
    search_velocity: int
    search_accerleration: int
    acceleration_mode: int
    operation_mode: int
    stop: int
    search_type: int
    destinate_position: int
    capture_type: int
    capture_mode: int
    breakpoint_mode: int
    breakpoint_polarity: int
    breakpoint_start_position: int
    breakpoint_pulse_width: int
    breakpoint_pulse_period: int
    breakpoint_pulse_number: int
    stop_decl: int
    motion_dict: dict[str, Any]
    def __init__(self, acceleration: int = 100000, deceleration: int = 100000) -> None:
        """Sets every field to its default.

        Args:
            acceleration: pulses per second squared.
            deceleration: pulses per second squared.
        """
    def __repr__(self) -> str:
        """Lists the fields."""

class MotionLinearInterpolation:
    """What the host remembers of the last linear interpolation."""
    main_axis: int
    main_dest: int
    second_axis: int
    second_dest: int
    third_axis: int
    third_dest: int
    fourth_axis: int
    fourth_dest: int
    speed: int
    acceleration: int
    deceleration: int
    mode: int
    def __init__(self) -> None:
        """Sets every field to its default."""
    def __repr__(self) -> str:
        """Lists the fields."""

class MotionCircularInterpolation:
    """What the host remembers of the last circular interpolation."""
    main_axis: int
    second_axis: int
    finish_point_x: int
    finish_point_y: int
    center_point_x: int
    center_point_y: int
    speed: int
    acceleration: int
    deceleration: int
    direction: int
    def __init__(self) -> None:
        """Sets every field to its default."""
    def __repr__(self) -> str:
        """Lists the fields."""

class MotionHelicalInterpolation:
    """What the host remembers of the last helical interpolation."""
    finish_point_axis1: int
    finish_point_axis2: int
    center_point_axis1: int
    center_point_axis2: int
    circular_direction: int
    circular_speed: int
    enable_axis3: int
    pitch_axis3: int
    enable_axis4: int
    pitch_axis4: int
    rotation_number: int
    calculation_result: int
    def __init__(self) -> None:
        """Sets every field to its default."""
    def __repr__(self) -> str:
        """Lists the fields."""

class MotionInifile:
    """What the values of an axis's settings are called in a file."""
    ini_out_dict: dict[str, dict[int, str]]
    ini_in_dict: dict[str, dict[str, int]]
    def __init__(self) -> None:
        """Makes both maps."""

class MCX514Driver(Packet):
    """The commands of the four-axis motion controller, one by one."""
    axis_1: MotionAxis
    axis_2: MotionAxis
    axis_3: MotionAxis
    axis_4: MotionAxis
    linear_interpo: MotionLinearInterpolation
    circular_interpo: MotionCircularInterpolation
    helical_interpo: MotionHelicalInterpolation
    motion_ini: MotionInifile
    def __init__(self) -> None:
        """Sets the resources of the model."""
    def _Motion_setAccelerationJerk(self, port: int, axis: int, jerk: int, timeout: float = 3) -> int:
        """Sets the change of the acceleration, in the chip's unit.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            jerk: the change of the acceleration, in the chip's unit, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setDecelerationJerk(self, port: int, axis: int, jerk: int, timeout: float = 3) -> int:
        """Sets the change of the deceleration, in the chip's unit.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            jerk: the change of the deceleration, in the chip's unit, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setAcceleration(self, port: int, axis: int, acceleration: int, timeout: float = 3) -> int:
        """Sets the acceleration, in pulses per second squared.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            acceleration: the acceleration, in pulses per second squared, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setDeceleration(self, port: int, axis: int, deceleration: int, timeout: float = 3) -> int:
        """Sets the deceleration, in pulses per second squared.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            deceleration: the deceleration, in pulses per second squared, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setInitialSpeed(self, port: int, axis: int, speed: int, timeout: float = 3) -> int:
        """Sets the starting speed, in pulses per second.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            speed: the starting speed, in pulses per second, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setDriveSpeed(self, port: int, axis: int, speed: int, timeout: float = 3) -> int:
        """Sets the driving speed, in pulses per second.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            speed: the driving speed, in pulses per second, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setDrivePositionFinishPoint(self, port: int, axis: int, position: int, timeout: float = 3) -> int:
        """Sets the distance or finish point, in pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            position: the distance or finish point, in pulses, -2147483648 to 2147483647.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setManualDecelerationPoint(self, port: int, axis: int, point: int, timeout: float = 3) -> int:
        """Sets where a manual deceleration begins, in pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            point: where a manual deceleration begins, in pulses, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setCircularCenterPoint(self, port: int, axis: int, position: int, timeout: float = 3) -> int:
        """Sets the centre of an arc, in pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            position: the centre of an arc, in pulses, -2147483648 to 2147483647.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setRealPositionCounter(self, port: int, axis: int, position: int, timeout: float = 3) -> int:
        """Sets the encoder's counter, in pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            position: the encoder's counter, in pulses, -2147483648 to 2147483647.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setSoftwareLimitP(self, port: int, axis: int, position: int, timeout: float = 3) -> int:
        """Sets the forward limit of the software, in pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            position: the forward limit of the software, in pulses, -2147483648 to 2147483647.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setSoftwareLimitM(self, port: int, axis: int, position: int, timeout: float = 3) -> int:
        """Sets the reverse limit of the software, in pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            position: the reverse limit of the software, in pulses, -2147483648 to 2147483647.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setLogicalCounterMaxValue(self, port: int, axis: int, value: int, timeout: float = 3) -> int:
        """Sets where the logical counter wraps, in pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            value: where the logical counter wraps, in pulses, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setRealCounterMaxValue(self, port: int, axis: int, value: int, timeout: float = 3) -> int:
        """Sets where the encoder's counter wraps, in pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            value: where the encoder's counter wraps, in pulses, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setMultiPurposeRegister0(self, port: int, axis: int, value: int, timeout: float = 3) -> int:
        """Sets multi-purpose register 0.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            value: multi-purpose register 0, -2147483648 to 2147483647.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setMultiPurposeRegister1(self, port: int, axis: int, value: int, timeout: float = 3) -> int:
        """Sets multi-purpose register 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            value: multi-purpose register 1, -2147483648 to 2147483647.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setMultiPurposeRegister2(self, port: int, axis: int, value: int, timeout: float = 3) -> int:
        """Sets multi-purpose register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            value: multi-purpose register 2, -2147483648 to 2147483647.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setMultiPurposeRegister3(self, port: int, axis: int, value: int, timeout: float = 3) -> int:
        """Sets multi-purpose register 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            value: multi-purpose register 3, -2147483648 to 2147483647.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setHomeSearchSpeed(self, port: int, axis: int, speed: int, timeout: float = 3) -> int:
        """Sets the speed near the reference, in pulses per second.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            speed: the speed near the reference, in pulses per second, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setIncreasingOrDecreasingSpeed(self, port: int, axis: int, speed: int, timeout: float = 3) -> int:
        """Sets the step of the speed, in pulses a second.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            speed: the step of the speed, in pulses a second, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setTimer(self, port: int, axis: int, value: int, timeout: float = 3) -> int:
        """Sets the timer, in the chip's unit.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            value: the timer, in the chip's unit, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setAccelerationCounterOffset(self, port: int, axis: int, offset: int, timeout: float = 3) -> int:
        """Sets the offset of the acceleration counter.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            offset: the offset of the acceleration counter, -32768 to 32767.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_splitPulse2(self, port: int, axis: int, pulse_number: int, timeout: float = 3) -> int:
        """Sets the timer instead of the number of split pulses (compatibility note 8).

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            pulse_number: the timer instead of the number of split pulses (compatibility note 8), 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setMultiPurposeMode(self, port: int, axis: int, mode: int, timeout: float = 3) -> int:
        """Sets the mode of the multi-purpose registers.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            mode: the mode of the multi-purpose registers, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setPIOSignal2(self, port: int, axis: int, state: int, timeout: float = 3) -> int:
        """Sets the second word of signal functions.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            state: the second word of signal functions, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setAutoHomeSearchMode1(self, port: int, axis: int, mode: int, timeout: float = 3) -> int:
        """Sets the first mode word of the reference search.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            mode: the first mode word of the reference search, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setAutoHomeSearchMode2(self, port: int, axis: int, mode: int, timeout: float = 3) -> int:
        """Sets the second mode word of the reference search.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            mode: the second mode word of the reference search, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setInputSignalFilterMode(self, port: int, axis: int, mode: int, timeout: float = 3) -> int:
        """Sets the input filters.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            mode: the input filters, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setSYNCAction0(self, port: int, axis: int, action: int, timeout: float = 3) -> int:
        """Sets SYNC action 0.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            action: SYNC action 0, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setSYNCAction1(self, port: int, axis: int, action: int, timeout: float = 3) -> int:
        """Sets SYNC action 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            action: SYNC action 1, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setSYNCAction2(self, port: int, axis: int, action: int, timeout: float = 3) -> int:
        """Sets SYNC action 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            action: SYNC action 2, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setSYNCAction3(self, port: int, axis: int, action: int, timeout: float = 3) -> int:
        """Sets SYNC action 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            action: SYNC action 3, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeWR1(self, port: int, axis: int, state: int, timeout: float = 3) -> int:
        """Sets write register 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            state: write register 1, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeWR2(self, port: int, axis: int, state: int, timeout: float = 3) -> int:
        """Sets write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            state: write register 2, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeWR3(self, port: int, axis: int, state: int, timeout: float = 3) -> int:
        """Sets write register 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            state: write register 3, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setMaxInterpolationPoint(self, port: int, point: int, timeout: float = 3) -> int:
        """Sets the greatest finish point of an interpolation.

        Args:
            port: connector of the controller as the device counts it.
            point: the greatest finish point of an interpolation, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setHelicalRotationNumber(self, port: int, rotation_number: int, timeout: float = 3) -> int:
        """Sets the number of turns of a helix.

        Args:
            port: connector of the controller as the device counts it.
            rotation_number: the number of turns of a helix, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setHelicalCalculation(self, port: int, value: int, timeout: float = 3) -> int:
        """Sets the calculated value of a helix.

        Args:
            port: connector of the controller as the device counts it.
            value: the calculated value of a helix, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setInterpolationMode(self, port: int, mode: int, timeout: float = 3) -> int:
        """Sets the mode word of the interpolation.

        Args:
            port: connector of the controller as the device counts it.
            mode: the mode word of the interpolation, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeWR0(self, port: int, state: int, timeout: float = 3) -> int:
        """Sets write register 0.

        Args:
            port: connector of the controller as the device counts it.
            state: write register 0, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeWR4(self, port: int, state: int, timeout: float = 3) -> int:
        """Sets write register 4.

        Args:
            port: connector of the controller as the device counts it.
            state: write register 4, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeWR5(self, port: int, state: int, timeout: float = 3) -> int:
        """Sets write register 5.

        Args:
            port: connector of the controller as the device counts it.
            state: write register 5, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeWR6(self, port: int, state: int, timeout: float = 3) -> int:
        """Sets write register 6.

        Args:
            port: connector of the controller as the device counts it.
            state: write register 6, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeWR7(self, port: int, state: int, timeout: float = 3) -> int:
        """Sets write register 7.

        Args:
            port: connector of the controller as the device counts it.
            state: write register 7, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getCurrentDriveSpeed(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the present speed, in pulses per second.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getCurrentAcceleration(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the present acceleration, in pulses per second squared.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getMultiPurposeRegister0(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads multi-purpose register 0.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getMultiPurposeRegister1(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads multi-purpose register 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getMultiPurposeRegister2(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads multi-purpose register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getMultiPurposeRegister3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads multi-purpose register 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getCurrentTimer(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the present timer value, in the chip's unit.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getMaxInterpolationPoint(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the greatest finish point of an interpolation.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getHelicalRotaionNumber(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the present turn of a helix.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getWR1(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads write register 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getWR2(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getWR3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads write register 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getMultiPurposeRegisterMode(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the mode of the multi-purpose registers.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getPIOSignal1(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the first word of signal functions.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getPIOSignal2(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the second word of signal functions.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getAcceleration(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the acceleration, in pulses per second squared.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getInitialSpeed(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the starting speed, in pulses per second.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getDriveSpeed(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the driving speed, in pulses per second.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getDrivePulseNumberPoint(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the finish point in pulses, without its sign.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getGeneralPurposeInput(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the general-purpose inputs.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeRR1(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads read register 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeRR2(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads read register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getHelicalCalculation(self, port: int, timeout: float = 3) -> int:
        """Reads the calculated value of a helix.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeRR0(self, port: int, timeout: float = 3) -> int:
        """Reads read register 0, bit i is set while axis i drives.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeRR4(self, port: int, timeout: float = 3) -> int:
        """Reads read register 4.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeRR5(self, port: int, timeout: float = 3) -> int:
        """Reads read register 5.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeRR6(self, port: int, timeout: float = 3) -> int:
        """Reads read register 6.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeRR7(self, port: int, timeout: float = 3) -> int:
        """Reads read register 7.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_NOP(self, port: int, axis: int, timeout: float = 3) -> int:
        """Does nothing.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_relativePositionDriving(self, port: int, axis: int, timeout: float = 3) -> int:
        """Starts a move by the set distance.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_counterRelativePositionDriving(self, port: int, axis: int, timeout: float = 3) -> int:
        """Starts a move by the set distance the other way.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_positiveDirContinuousPlusDriving(self, port: int, axis: int, timeout: float = 3) -> int:
        """Starts a continuous move forward.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_negativeDirContinuousPlusDriving(self, port: int, axis: int, timeout: float = 3) -> int:
        """Starts a continuous move backwards.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_absolutePositionDriving(self, port: int, axis: int, timeout: float = 3) -> int:
        """Starts a move to the set finish point.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_decelerateStop(self, port: int, axis: int, timeout: float = 3) -> int:
        """Stops with deceleration.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_instantStop(self, port: int, axis: int, timeout: float = 3) -> int:
        """Stops at once.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_dirSignalPositiveSetting(self, port: int, axis: int, timeout: float = 3) -> int:
        """Turns the direction output forward.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_dirSignalNegativeSetting(self, port: int, axis: int, timeout: float = 3) -> int:
        """Turns the direction output backwards.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_autoHomeSearch(self, port: int, axis: int, timeout: float = 3) -> int:
        """Starts the reference search.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_increaseSpeed(self, port: int, axis: int, timeout: float = 3) -> int:
        """Speeds up by the set step.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_decreaseSpeed(self, port: int, axis: int, timeout: float = 3) -> int:
        """Slows down by the set step.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_clearDeviationCounterSpeed(self, port: int, axis: int, timeout: float = 3) -> int:
        """Gives out the pulse that clears a deviation counter.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_startTimer(self, port: int, axis: int, timeout: float = 3) -> int:
        """Starts the timer.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_stopTimer(self, port: int, axis: int, timeout: float = 3) -> int:
        """Stops the timer.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_startSplitPulse(self, port: int, axis: int, timeout: float = 3) -> int:
        """Starts the split pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_stopSplitPulse(self, port: int, axis: int, timeout: float = 3) -> int:
        """Stops the split pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_holdDrivingStart(self, port: int, axis: int, timeout: float = 3) -> int:
        """Holds the start of the next drive.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_clearErrorStatus(self, port: int, axis: int, timeout: float = 3) -> int:
        """Clears the error bits of read register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_displayRR3PageZero(self, port: int, axis: int, timeout: float = 3) -> int:
        """Shows page 0 in read register 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_displayRR3PageOne(self, port: int, axis: int, timeout: float = 3) -> int:
        """Shows page 1 in read register 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_clearMaxFinishPoint(self, port: int, axis: int, timeout: float = 3) -> int:
        """Clears the greatest finish point.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_oneAxisLinearInterpolation(self, port: int, timeout: float = 3) -> int:
        """Starts a linear interpolation of one axis.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_twoAxisLinearInterpolation(self, port: int, timeout: float = 3) -> int:
        """Starts a linear interpolation of two axes.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_threeAxisLinearInterpolation(self, port: int, timeout: float = 3) -> int:
        """Starts a linear interpolation of three axes.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_fourAxisLinearInterpolation(self, port: int, timeout: float = 3) -> int:
        """Starts a linear interpolation of four axes.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_cwCircularInterpolation(self, port: int, timeout: float = 3) -> int:
        """Starts an arc, clockwise.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_ccwCircularInterpolation(self, port: int, timeout: float = 3) -> int:
        """Starts an arc, counter-clockwise.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_twoAxisPatternPolation(self, port: int, timeout: float = 3) -> int:
        """Starts a bit pattern of two axes.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_threeAxisPatternPolation(self, port: int, timeout: float = 3) -> int:
        """Starts a bit pattern of three axes.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_fourAxisPatternPolation(self, port: int, timeout: float = 3) -> int:
        """Starts a bit pattern of four axes.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_cwHelicalInterpolation(self, port: int, timeout: float = 3) -> int:
        """Starts a helix, clockwise.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_ccwHelicalInterpolation(self, port: int, timeout: float = 3) -> int:
        """Starts a helix, counter-clockwise.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_cwHelicalCalculation(self, port: int, timeout: float = 3) -> int:
        """Starts the calculation of a helix, clockwise.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_ccwHelicalCalculation(self, port: int, timeout: float = 3) -> int:
        """Starts the calculation of a helix, counter-clockwise.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableDeceleration(self, port: int, timeout: float = 3) -> int:
        """Makes an interpolation decelerate.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableDeceleration(self, port: int, timeout: float = 3) -> int:
        """Keeps an interpolation from decelerating.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_interruptSingleStepInterpolation(self, port: int, timeout: float = 3) -> int:
        """Ends single steps of an interpolation.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_checkI2C(self, port: int, timeout: float = 3) -> int:
        """Makes the device check its link to the chip.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_resetI2C(self, port: int, timeout: float = 3) -> int:
        """Makes the device reset its link to the chip.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_resetHardware(self, port: int, timeout: float = 3) -> int:
        """Resets the chip.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_reset(self, port: int, timeout: float = 3) -> int:
        """Resets the chip.

        Args:
            port: connector of the controller as the device counts it.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setLogicalLevelDrivingStop0(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the active level of stop input 0.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of stop input 0, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableDrivingStop0(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches stop input 0.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: stop input 0, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setLogicalLevelDrivingStop1(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the active level of stop input 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of stop input 1, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableDrivingStop1(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches stop input 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: stop input 1, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setLogicalLevelDrivingStop2(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the active level of stop input 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of stop input 2, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableDrivingStop2(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches stop input 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: stop input 2, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setLogicalLevelInposition(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the active level of the in-position input.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of the in-position input, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableInposition(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the in-position input.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the in-position input, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setLogicalLevelServoAlarm(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the active level of the servo alarm.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of the servo alarm, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableServoAlarm(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the servo alarm.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the servo alarm, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setLogicalLevelHardwareLimit(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the active level of the limit inputs.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of the limit inputs, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableHardwareLimit(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the limit inputs.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the limit inputs, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableDeceleratingStopHardwareLimitOn(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the deceleration at a limit input.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the deceleration at a limit input, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableSoftwareLimit(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the limits of the software.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the limits of the software, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableRealPosiCounterSoftwareLimitOn(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches those limits to the encoder's counter.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: those limits to the encoder's counter, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableInstantStopSoftwareLimitOn(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the stop at once at those limits.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the stop at once at those limits, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableManualDeceleration(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the manual deceleration.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the manual deceleration, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableAsymmetricAccelerationDeceleration(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches a deceleration of its own.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: a deceleration of its own, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableScurveDriving(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches S-curve driving.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: S-curve driving, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setPulseModeBit0(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches bit 0 of the pulse output's mode.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: bit 0 of the pulse output's mode, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setPulseModeBit1(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches bit 1 of the pulse output's mode.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: bit 1 of the pulse output's mode, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setLogicalLevelOfDrivingPulse(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the active level of the pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of the pulses, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setLogicalLevelOfOnePulse(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the active level of the direction.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of the direction, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enablePMPPPinInversion(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the exchange of the two pulse pins.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the exchange of the two pulse pins, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setEncoderPulseInputBit0(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches bit 0 of the encoder input's mode.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: bit 0 of the encoder input's mode, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setEncoderPulseInputBit1(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches bit 1 of the encoder input's mode.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: bit 1 of the encoder input's mode, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setLogicalLevelOfEncoderInputSignal(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the active level of the encoder.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of the encoder, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableECA_ECBPinInversion(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the exchange of the two encoder pins.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the exchange of the two encoder pins, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableLMTP_LMTMPinInversion(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the exchange of the two limit pins.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the exchange of the two limit pins, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableTriangleFormPrevention(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches triangular speed profiles.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: triangular speed profiles, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableRepeatTimer(self, port: int, axis: int, on_state: int, timeout: float = 3) -> int:
        """Switches the repetition of the timer.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the repetition of the timer, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableActionSYNC0(self, port: int, axis: int, timeout: float = 3) -> int:
        """Enables SYNC action 0.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableActionSYNC1(self, port: int, axis: int, timeout: float = 3) -> int:
        """Enables SYNC action 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableActionSYNC0SYNC1(self, port: int, axis: int, timeout: float = 3) -> int:
        """Enables SYNC action 0 and 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableActionSYNC2(self, port: int, axis: int, timeout: float = 3) -> int:
        """Enables SYNC action 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableActionSYNC0SYNC2(self, port: int, axis: int, timeout: float = 3) -> int:
        """Enables SYNC action 0 and 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableActionSYNC1SYNC2(self, port: int, axis: int, timeout: float = 3) -> int:
        """Enables SYNC action 1 and 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableActionSYNC0SYNC1SYNC2(self, port: int, axis: int, timeout: float = 3) -> int:
        """Enables SYNC action 0 and 1 and 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableActionSYNC3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Enables SYNC action 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableActionSYNC0SYNC3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Enables SYNC action 0 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableActionSYNC1SYNC3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Enables SYNC action 1 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableActionSYNC0SYNC1SYNC3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Enables SYNC action 0 and 1 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableActionSYNC2SYNC3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Enables SYNC action 2 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableActionSYNC0SYNC2SYNC3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Enables SYNC action 0 and 2 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableActionSYNC1SYNC2SYNC3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Enables SYNC action 1 and 2 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableActionSYNC0SYNC1SYNC2SYNC3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Enables SYNC action 0 and 1 and 2 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableActionSYNC0(self, port: int, axis: int, timeout: float = 3) -> int:
        """Disables SYNC action 0.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableActionSYNC1(self, port: int, axis: int, timeout: float = 3) -> int:
        """Disables SYNC action 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableActionSYNC0SYNC1(self, port: int, axis: int, timeout: float = 3) -> int:
        """Disables SYNC action 0 and 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableActionSYNC2(self, port: int, axis: int, timeout: float = 3) -> int:
        """Disables SYNC action 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableActionSYNC0SYNC2(self, port: int, axis: int, timeout: float = 3) -> int:
        """Disables SYNC action 0 and 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableActionSYNC1SYNC2(self, port: int, axis: int, timeout: float = 3) -> int:
        """Disables SYNC action 1 and 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableActionSYNC0SYNC1SYNC2(self, port: int, axis: int, timeout: float = 3) -> int:
        """Disables SYNC action 0 and 1 and 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableActionSYNC3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Disables SYNC action 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableActionSYNC0SYNC3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Disables SYNC action 0 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableActionSYNC1SYNC3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Disables SYNC action 1 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableActionSYNC0SYNC1SYNC3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Disables SYNC action 0 and 1 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableActionSYNC2SYNC3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Disables SYNC action 2 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableActionSYNC0SYNC2SYNC3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Disables SYNC action 0 and 2 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableActionSYNC1SYNC2SYNC3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Disables SYNC action 1 and 2 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_disableActionSYNC0SYNC1SYNC2SYNC3(self, port: int, axis: int, timeout: float = 3) -> int:
        """Disables SYNC action 0 and 1 and 2 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_splitPulse1(self, port: int, axis: int, pulse_width: int, pulse_period: int, timeout: float = 3) -> int:
        """Sets the width and the period of split pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            pulse_width: width in the chip's unit, 0 to 65535.
            pulse_period: period in the chip's unit, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setGPIOValue(self, port: int, axis: int, mask: int, value: int, timeout: float = 3) -> int:
        """Drives general-purpose outputs.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            mask: lines to drive, 0 to 255.
            value: their levels, 0 to 255.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setPIOSignal1(self, port: int, axis: int, state: int, timeout: float = 3) -> int:
        """Sets the first word of signal functions to its one value.

        Args:
            port: connector of the controller as the device counts it.
            axis: mask of axes, 0 to 15, sent as it is.
            state: without effect (compatibility note 12).
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeRR3(self, port: int, axis: int, page: int, timeout: float = 3) -> int:
        """Reads a page of read register 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            page: page, 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_releaseDrivingStart(self, port: int, axis: int, timeout: float = 3) -> int:
        """Releases the drives that are held. The object must have a check of its own for the mask (compatibility note 11).

        Args:
            port: connector of the controller as the device counts it.
            axis: mask of axes, 0 to 15, sent as it is.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_setLogicalPosi(self, port: int, axis: int, counter: int, timeout: float = 3) -> int:
        """Sets the logical position counter. On the chassis the awaitable form takes the slot (compatibility note 13).

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            counter: position in pulses, -2147483648 to 2147483647.
            timeout: seconds in which the device must answer, above 0.
        """

class MCX514Driver_async(Packet_async):
    """The commands of the four-axis motion controller, one by one."""
    def __init__(self) -> None:
        """Sets the resources of the model."""
    async def _Motion_setAccelerationJerk_async(self, port: int, axis: int, jerk: int) -> int:
        """Sets the change of the acceleration, in the chip's unit.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            jerk: the change of the acceleration, in the chip's unit, 0 to 4294967295.
        """
    async def _Motion_setDecelerationJerk_async(self, port: int, axis: int, jerk: int) -> int:
        """Sets the change of the deceleration, in the chip's unit.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            jerk: the change of the deceleration, in the chip's unit, 0 to 4294967295.
        """
    async def _Motion_setAcceleration_async(self, port: int, axis: int, acceleration: int) -> int:
        """Sets the acceleration, in pulses per second squared.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            acceleration: the acceleration, in pulses per second squared, 0 to 4294967295.
        """
    async def _Motion_setDeceleration_async(self, port: int, axis: int, deceleration: int) -> int:
        """Sets the deceleration, in pulses per second squared.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            deceleration: the deceleration, in pulses per second squared, 0 to 4294967295.
        """
    async def _Motion_setInitialSpeed_async(self, port: int, axis: int, speed: int) -> int:
        """Sets the starting speed, in pulses per second.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            speed: the starting speed, in pulses per second, 0 to 4294967295.
        """
    async def _Motion_setDriveSpeed_async(self, port: int, axis: int, speed: int) -> int:
        """Sets the driving speed, in pulses per second.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            speed: the driving speed, in pulses per second, 0 to 4294967295.
        """
    async def _Motion_setDrivePositionFinishPoint_async(self, port: int, axis: int, position: int) -> int:
        """Sets the distance or finish point, in pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            position: the distance or finish point, in pulses, -2147483648 to 2147483647.
        """
    async def _Motion_setManualDecelerationPoint_async(self, port: int, axis: int, point: int) -> int:
        """Sets where a manual deceleration begins, in pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            point: where a manual deceleration begins, in pulses, 0 to 4294967295.
        """
    async def _Motion_setCircularCenterPoint_async(self, port: int, axis: int, position: int) -> int:
        """Sets the centre of an arc, in pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            position: the centre of an arc, in pulses, -2147483648 to 2147483647.
        """
    async def _Motion_setRealPositionCounter_async(self, port: int, axis: int, position: int) -> int:
        """Sets the encoder's counter, in pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            position: the encoder's counter, in pulses, -2147483648 to 2147483647.
        """
    async def _Motion_setSoftwareLimitP_async(self, port: int, axis: int, position: int) -> int:
        """Sets the forward limit of the software, in pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            position: the forward limit of the software, in pulses, -2147483648 to 2147483647.
        """
    async def _Motion_setSoftwareLimitM_async(self, port: int, axis: int, position: int) -> int:
        """Sets the reverse limit of the software, in pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            position: the reverse limit of the software, in pulses, -2147483648 to 2147483647.
        """
    async def _Motion_setLogicalCounterMaxValue_async(self, port: int, axis: int, value: int) -> int:
        """Sets where the logical counter wraps, in pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            value: where the logical counter wraps, in pulses, 0 to 4294967295.
        """
    async def _Motion_setRealCounterMaxValue_async(self, port: int, axis: int, value: int) -> int:
        """Sets where the encoder's counter wraps, in pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            value: where the encoder's counter wraps, in pulses, 0 to 4294967295.
        """
    async def _Motion_setMultiPurposeRegister0_async(self, port: int, axis: int, value: int) -> int:
        """Sets multi-purpose register 0.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            value: multi-purpose register 0, -2147483648 to 2147483647.
        """
    async def _Motion_setMultiPurposeRegister1_async(self, port: int, axis: int, value: int) -> int:
        """Sets multi-purpose register 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            value: multi-purpose register 1, -2147483648 to 2147483647.
        """
    async def _Motion_setMultiPurposeRegister2_async(self, port: int, axis: int, value: int) -> int:
        """Sets multi-purpose register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            value: multi-purpose register 2, -2147483648 to 2147483647.
        """
    async def _Motion_setMultiPurposeRegister3_async(self, port: int, axis: int, value: int) -> int:
        """Sets multi-purpose register 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            value: multi-purpose register 3, -2147483648 to 2147483647.
        """
    async def _Motion_setHomeSearchSpeed_async(self, port: int, axis: int, speed: int) -> int:
        """Sets the speed near the reference, in pulses per second.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            speed: the speed near the reference, in pulses per second, 0 to 4294967295.
        """
    async def _Motion_setIncreasingOrDecreasingSpeed_async(self, port: int, axis: int, speed: int) -> int:
        """Sets the step of the speed, in pulses a second.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            speed: the step of the speed, in pulses a second, 0 to 4294967295.
        """
    async def _Motion_setTimer_async(self, port: int, axis: int, value: int) -> int:
        """Sets the timer, in the chip's unit.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            value: the timer, in the chip's unit, 0 to 4294967295.
        """
    async def _Motion_setAccelerationCounterOffset_async(self, port: int, axis: int, offset: int) -> int:
        """Sets the offset of the acceleration counter.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            offset: the offset of the acceleration counter, -32768 to 32767.
        """
    async def _Motion_splitPulse2_async(self, port: int, axis: int, pulse_number: int) -> int:
        """Sets the timer instead of the number of split pulses (compatibility note 8).

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            pulse_number: the timer instead of the number of split pulses (compatibility note 8), 0 to 65535.
        """
    async def _Motion_setMultiPurposeMode_async(self, port: int, axis: int, mode: int) -> int:
        """Sets the mode of the multi-purpose registers.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            mode: the mode of the multi-purpose registers, 0 to 65535.
        """
    async def _Motion_setPIOSignal2_async(self, port: int, axis: int, state: int) -> int:
        """Sets the second word of signal functions.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            state: the second word of signal functions, 0 to 65535.
        """
    async def _Motion_setAutoHomeSearchMode1_async(self, port: int, axis: int, mode: int) -> int:
        """Sets the first mode word of the reference search.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            mode: the first mode word of the reference search, 0 to 65535.
        """
    async def _Motion_setAutoHomeSearchMode2_async(self, port: int, axis: int, mode: int) -> int:
        """Sets the second mode word of the reference search.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            mode: the second mode word of the reference search, 0 to 65535.
        """
    async def _Motion_setInputSignalFilterMode_async(self, port: int, axis: int, mode: int) -> int:
        """Sets the input filters.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            mode: the input filters, 0 to 65535.
        """
    async def _Motion_setSYNCAction0_async(self, port: int, axis: int, action: int) -> int:
        """Sets SYNC action 0.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            action: SYNC action 0, 0 to 65535.
        """
    async def _Motion_setSYNCAction1_async(self, port: int, axis: int, action: int) -> int:
        """Sets SYNC action 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            action: SYNC action 1, 0 to 65535.
        """
    async def _Motion_setSYNCAction2_async(self, port: int, axis: int, action: int) -> int:
        """Sets SYNC action 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            action: SYNC action 2, 0 to 65535.
        """
    async def _Motion_setSYNCAction3_async(self, port: int, axis: int, action: int) -> int:
        """Sets SYNC action 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            action: SYNC action 3, 0 to 65535.
        """
    async def _Motion_writeWR1_async(self, port: int, axis: int, state: int) -> int:
        """Sets write register 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            state: write register 1, 0 to 65535.
        """
    async def _Motion_writeWR2_async(self, port: int, axis: int, state: int) -> int:
        """Sets write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            state: write register 2, 0 to 65535.
        """
    async def _Motion_writeWR3_async(self, port: int, axis: int, state: int) -> int:
        """Sets write register 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            state: write register 3, 0 to 65535.
        """
    async def _Motion_setMaxInterpolationPoint_async(self, port: int, point: int) -> int:
        """Sets the greatest finish point of an interpolation.

        Args:
            port: connector of the controller as the device counts it.
            point: the greatest finish point of an interpolation, 0 to 4294967295.
        """
    async def _Motion_setHelicalRotationNumber_async(self, port: int, rotation_number: int) -> int:
        """Sets the number of turns of a helix.

        Args:
            port: connector of the controller as the device counts it.
            rotation_number: the number of turns of a helix, 0 to 65535.
        """
    async def _Motion_setHelicalCalculation_async(self, port: int, value: int) -> int:
        """Sets the calculated value of a helix.

        Args:
            port: connector of the controller as the device counts it.
            value: the calculated value of a helix, 0 to 4294967295.
        """
    async def _Motion_setInterpolationMode_async(self, port: int, mode: int) -> int:
        """Sets the mode word of the interpolation.

        Args:
            port: connector of the controller as the device counts it.
            mode: the mode word of the interpolation, 0 to 65535.
        """
    async def _Motion_writeWR0_async(self, port: int, state: int) -> int:
        """Sets write register 0.

        Args:
            port: connector of the controller as the device counts it.
            state: write register 0, 0 to 65535.
        """
    async def _Motion_writeWR4_async(self, port: int, state: int) -> int:
        """Sets write register 4.

        Args:
            port: connector of the controller as the device counts it.
            state: write register 4, 0 to 65535.
        """
    async def _Motion_writeWR5_async(self, port: int, state: int) -> int:
        """Sets write register 5.

        Args:
            port: connector of the controller as the device counts it.
            state: write register 5, 0 to 65535.
        """
    async def _Motion_writeWR6_async(self, port: int, state: int) -> int:
        """Sets write register 6.

        Args:
            port: connector of the controller as the device counts it.
            state: write register 6, 0 to 65535.
        """
    async def _Motion_writeWR7_async(self, port: int, state: int) -> int:
        """Sets write register 7.

        Args:
            port: connector of the controller as the device counts it.
            state: write register 7, 0 to 65535.
        """
    async def _Motion_getCurrentDriveSpeed_async(self, port: int, axis: int) -> int:
        """Reads the present speed, in pulses per second.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getCurrentAcceleration_async(self, port: int, axis: int) -> int:
        """Reads the present acceleration, in pulses per second squared.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getMultiPurposeRegister0_async(self, port: int, axis: int) -> int:
        """Reads multi-purpose register 0.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getMultiPurposeRegister1_async(self, port: int, axis: int) -> int:
        """Reads multi-purpose register 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getMultiPurposeRegister2_async(self, port: int, axis: int) -> int:
        """Reads multi-purpose register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getMultiPurposeRegister3_async(self, port: int, axis: int) -> int:
        """Reads multi-purpose register 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getCurrentTimer_async(self, port: int, axis: int) -> int:
        """Reads the present timer value, in the chip's unit.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getMaxInterpolationPoint_async(self, port: int, axis: int) -> int:
        """Reads the greatest finish point of an interpolation.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getHelicalRotaionNumber_async(self, port: int, axis: int) -> int:
        """Reads the present turn of a helix.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getWR1_async(self, port: int, axis: int) -> int:
        """Reads write register 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getWR2_async(self, port: int, axis: int) -> int:
        """Reads write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getWR3_async(self, port: int, axis: int) -> int:
        """Reads write register 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getMultiPurposeRegisterMode_async(self, port: int, axis: int) -> int:
        """Reads the mode of the multi-purpose registers.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getPIOSignal1_async(self, port: int, axis: int) -> int:
        """Reads the first word of signal functions.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getPIOSignal2_async(self, port: int, axis: int) -> int:
        """Reads the second word of signal functions.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getAcceleration_async(self, port: int, axis: int) -> int:
        """Reads the acceleration, in pulses per second squared.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getInitialSpeed_async(self, port: int, axis: int) -> int:
        """Reads the starting speed, in pulses per second.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getDriveSpeed_async(self, port: int, axis: int) -> int:
        """Reads the driving speed, in pulses per second.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getDrivePulseNumberPoint_async(self, port: int, axis: int) -> int:
        """Reads the finish point in pulses, without its sign.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getGeneralPurposeInput_async(self, port: int, axis: int) -> int:
        """Reads the general-purpose inputs.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_writeRR1_async(self, port: int, axis: int) -> int:
        """Reads read register 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_writeRR2_async(self, port: int, axis: int) -> int:
        """Reads read register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_getHelicalCalculation_async(self, port: int) -> int:
        """Reads the calculated value of a helix.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_writeRR0_async(self, port: int) -> int:
        """Reads read register 0, bit i is set while axis i drives.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_writeRR4_async(self, port: int) -> int:
        """Reads read register 4.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_writeRR5_async(self, port: int) -> int:
        """Reads read register 5.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_writeRR6_async(self, port: int) -> int:
        """Reads read register 6.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_writeRR7_async(self, port: int) -> int:
        """Reads read register 7.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_NOP_async(self, port: int, axis: int) -> int:
        """Does nothing.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_relativePositionDriving_async(self, port: int, axis: int) -> int:
        """Starts a move by the set distance.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_counterRelativePositionDriving_async(self, port: int, axis: int) -> int:
        """Starts a move by the set distance the other way.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_positiveDirContinuousPlusDriving_async(self, port: int, axis: int) -> int:
        """Starts a continuous move forward.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_negativeDirContinuousPlusDriving_async(self, port: int, axis: int) -> int:
        """Starts a continuous move backwards.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_absolutePositionDriving_async(self, port: int, axis: int) -> int:
        """Starts a move to the set finish point.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_decelerateStop_async(self, port: int, axis: int) -> int:
        """Stops with deceleration.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_instantStop_async(self, port: int, axis: int) -> int:
        """Stops at once.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_dirSignalPositiveSetting_async(self, port: int, axis: int) -> int:
        """Turns the direction output forward.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_dirSignalNegativeSetting_async(self, port: int, axis: int) -> int:
        """Turns the direction output backwards.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_autoHomeSearch_async(self, port: int, axis: int) -> int:
        """Starts the reference search.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_increaseSpeed_async(self, port: int, axis: int) -> int:
        """Speeds up by the set step.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_decreaseSpeed_async(self, port: int, axis: int) -> int:
        """Slows down by the set step.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_clearDeviationCounterSpeed_async(self, port: int, axis: int) -> int:
        """Gives out the pulse that clears a deviation counter.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_startTimer_async(self, port: int, axis: int) -> int:
        """Starts the timer.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_stopTimer_async(self, port: int, axis: int) -> int:
        """Stops the timer.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_startSplitPulse_async(self, port: int, axis: int) -> int:
        """Starts the split pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_stopSplitPulse_async(self, port: int, axis: int) -> int:
        """Stops the split pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_holdDrivingStart_async(self, port: int, axis: int) -> int:
        """Holds the start of the next drive.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_clearErrorStatus_async(self, port: int, axis: int) -> int:
        """Clears the error bits of read register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_displayRR3PageZero_async(self, port: int, axis: int) -> int:
        """Shows page 0 in read register 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_displayRR3PageOne_async(self, port: int, axis: int) -> int:
        """Shows page 1 in read register 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_clearMaxFinishPoint_async(self, port: int, axis: int) -> int:
        """Clears the greatest finish point.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_oneAxisLinearInterpolation_async(self, port: int) -> int:
        """Starts a linear interpolation of one axis.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_twoAxisLinearInterpolation_async(self, port: int) -> int:
        """Starts a linear interpolation of two axes.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_threeAxisLinearInterpolation_async(self, port: int) -> int:
        """Starts a linear interpolation of three axes.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_fourAxisLinearInterpolation_async(self, port: int) -> int:
        """Starts a linear interpolation of four axes.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_cwCircularInterpolation_async(self, port: int) -> int:
        """Starts an arc, clockwise.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_ccwCircularInterpolation_async(self, port: int) -> int:
        """Starts an arc, counter-clockwise.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_twoAxisPatternPolation_async(self, port: int) -> int:
        """Starts a bit pattern of two axes.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_threeAxisPatternPolation_async(self, port: int) -> int:
        """Starts a bit pattern of three axes.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_fourAxisPatternPolation_async(self, port: int) -> int:
        """Starts a bit pattern of four axes.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_cwHelicalInterpolation_async(self, port: int) -> int:
        """Starts a helix, clockwise.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_ccwHelicalInterpolation_async(self, port: int) -> int:
        """Starts a helix, counter-clockwise.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_cwHelicalCalculation_async(self, port: int) -> int:
        """Starts the calculation of a helix, clockwise.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_ccwHelicalCalculation_async(self, port: int) -> int:
        """Starts the calculation of a helix, counter-clockwise.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_enableDeceleration_async(self, port: int) -> int:
        """Makes an interpolation decelerate.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_disableDeceleration_async(self, port: int) -> int:
        """Keeps an interpolation from decelerating.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_interruptSingleStepInterpolation_async(self, port: int) -> int:
        """Ends single steps of an interpolation.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_checkI2C_async(self, port: int) -> int:
        """Makes the device check its link to the chip.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_resetI2C_async(self, port: int) -> int:
        """Makes the device reset its link to the chip.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_resetHardware_async(self, port: int) -> int:
        """Resets the chip.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_reset_async(self, port: int) -> int:
        """Resets the chip.

        Args:
            port: connector of the controller as the device counts it.
        """
    async def _Motion_setLogicalLevelDrivingStop0_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the active level of stop input 0.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of stop input 0, 0 or 1.
        """
    async def _Motion_enableDrivingStop0_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches stop input 0.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: stop input 0, 0 or 1.
        """
    async def _Motion_setLogicalLevelDrivingStop1_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the active level of stop input 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of stop input 1, 0 or 1.
        """
    async def _Motion_enableDrivingStop1_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches stop input 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: stop input 1, 0 or 1.
        """
    async def _Motion_setLogicalLevelDrivingStop2_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the active level of stop input 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of stop input 2, 0 or 1.
        """
    async def _Motion_enableDrivingStop2_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches stop input 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: stop input 2, 0 or 1.
        """
    async def _Motion_setLogicalLevelInposition_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the active level of the in-position input.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of the in-position input, 0 or 1.
        """
    async def _Motion_enableInposition_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the in-position input.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the in-position input, 0 or 1.
        """
    async def _Motion_setLogicalLevelServoAlarm_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the active level of the servo alarm.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of the servo alarm, 0 or 1.
        """
    async def _Motion_enableServoAlarm_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the servo alarm.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the servo alarm, 0 or 1.
        """
    async def _Motion_setLogicalLevelHardwareLimit_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the active level of the limit inputs.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of the limit inputs, 0 or 1.
        """
    async def _Motion_enableHardwareLimit_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the limit inputs.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the limit inputs, 0 or 1.
        """
    async def _Motion_enableDeceleratingStopHardwareLimitOn_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the deceleration at a limit input.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the deceleration at a limit input, 0 or 1.
        """
    async def _Motion_enableSoftwareLimit_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the limits of the software.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the limits of the software, 0 or 1.
        """
    async def _Motion_enableRealPosiCounterSoftwareLimitOn_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches those limits to the encoder's counter.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: those limits to the encoder's counter, 0 or 1.
        """
    async def _Motion_enableInstantStopSoftwareLimitOn_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the stop at once at those limits.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the stop at once at those limits, 0 or 1.
        """
    async def _Motion_enableManualDeceleration_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the manual deceleration.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the manual deceleration, 0 or 1.
        """
    async def _Motion_enableAsymmetricAccelerationDeceleration_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches a deceleration of its own.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: a deceleration of its own, 0 or 1.
        """
    async def _Motion_enableScurveDriving_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches S-curve driving.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: S-curve driving, 0 or 1.
        """
    async def _Motion_setPulseModeBit0_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches bit 0 of the pulse output's mode.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: bit 0 of the pulse output's mode, 0 or 1.
        """
    async def _Motion_setPulseModeBit1_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches bit 1 of the pulse output's mode.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: bit 1 of the pulse output's mode, 0 or 1.
        """
    async def _Motion_setLogicalLevelOfDrivingPulse_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the active level of the pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of the pulses, 0 or 1.
        """
    async def _Motion_setLogicalLevelOfOnePulse_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the active level of the direction.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of the direction, 0 or 1.
        """
    async def _Motion_enablePMPPPinInversion_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the exchange of the two pulse pins.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the exchange of the two pulse pins, 0 or 1.
        """
    async def _Motion_setEncoderPulseInputBit0_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches bit 0 of the encoder input's mode.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: bit 0 of the encoder input's mode, 0 or 1.
        """
    async def _Motion_setEncoderPulseInputBit1_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches bit 1 of the encoder input's mode.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: bit 1 of the encoder input's mode, 0 or 1.
        """
    async def _Motion_setLogicalLevelOfEncoderInputSignal_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the active level of the encoder.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the active level of the encoder, 0 or 1.
        """
    async def _Motion_enableECA_ECBPinInversion_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the exchange of the two encoder pins.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the exchange of the two encoder pins, 0 or 1.
        """
    async def _Motion_enableLMTP_LMTMPinInversion_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the exchange of the two limit pins.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the exchange of the two limit pins, 0 or 1.
        """
    async def _Motion_disableTriangleFormPrevention_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches triangular speed profiles.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: triangular speed profiles, 0 or 1.
        """
    async def _Motion_enableRepeatTimer_async(self, port: int, axis: int, on_state: int) -> int:
        """Switches the repetition of the timer.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            on_state: the repetition of the timer, 0 or 1.
        """
    async def _Motion_enableActionSYNC0_async(self, port: int, axis: int) -> int:
        """Enables SYNC action 0.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_enableActionSYNC1_async(self, port: int, axis: int) -> int:
        """Enables SYNC action 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_enableActionSYNC0SYNC1_async(self, port: int, axis: int) -> int:
        """Enables SYNC action 0 and 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_enableActionSYNC2_async(self, port: int, axis: int) -> int:
        """Enables SYNC action 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_enableActionSYNC0SYNC2_async(self, port: int, axis: int) -> int:
        """Enables SYNC action 0 and 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_enableActionSYNC1SYNC2_async(self, port: int, axis: int) -> int:
        """Enables SYNC action 1 and 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_enableActionSYNC0SYNC1SYNC2_async(self, port: int, axis: int) -> int:
        """Enables SYNC action 0 and 1 and 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_enableActionSYNC3_async(self, port: int, axis: int) -> int:
        """Enables SYNC action 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_enableActionSYNC0SYNC3_async(self, port: int, axis: int) -> int:
        """Enables SYNC action 0 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_enableActionSYNC1SYNC3_async(self, port: int, axis: int) -> int:
        """Enables SYNC action 1 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_enableActionSYNC0SYNC1SYNC3_async(self, port: int, axis: int) -> int:
        """Enables SYNC action 0 and 1 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_enableActionSYNC2SYNC3_async(self, port: int, axis: int) -> int:
        """Enables SYNC action 2 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_enableActionSYNC0SYNC2SYNC3_async(self, port: int, axis: int) -> int:
        """Enables SYNC action 0 and 2 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_enableActionSYNC1SYNC2SYNC3_async(self, port: int, axis: int) -> int:
        """Enables SYNC action 1 and 2 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_enableActionSYNC0SYNC1SYNC2SYNC3_async(self, port: int, axis: int) -> int:
        """Enables SYNC action 0 and 1 and 2 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_disableActionSYNC0_async(self, port: int, axis: int) -> int:
        """Disables SYNC action 0.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_disableActionSYNC1_async(self, port: int, axis: int) -> int:
        """Disables SYNC action 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_disableActionSYNC0SYNC1_async(self, port: int, axis: int) -> int:
        """Disables SYNC action 0 and 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_disableActionSYNC2_async(self, port: int, axis: int) -> int:
        """Disables SYNC action 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_disableActionSYNC0SYNC2_async(self, port: int, axis: int) -> int:
        """Disables SYNC action 0 and 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_disableActionSYNC1SYNC2_async(self, port: int, axis: int) -> int:
        """Disables SYNC action 1 and 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_disableActionSYNC0SYNC1SYNC2_async(self, port: int, axis: int) -> int:
        """Disables SYNC action 0 and 1 and 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_disableActionSYNC3_async(self, port: int, axis: int) -> int:
        """Disables SYNC action 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_disableActionSYNC0SYNC3_async(self, port: int, axis: int) -> int:
        """Disables SYNC action 0 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_disableActionSYNC1SYNC3_async(self, port: int, axis: int) -> int:
        """Disables SYNC action 1 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_disableActionSYNC0SYNC1SYNC3_async(self, port: int, axis: int) -> int:
        """Disables SYNC action 0 and 1 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_disableActionSYNC2SYNC3_async(self, port: int, axis: int) -> int:
        """Disables SYNC action 2 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_disableActionSYNC0SYNC2SYNC3_async(self, port: int, axis: int) -> int:
        """Disables SYNC action 0 and 2 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_disableActionSYNC1SYNC2SYNC3_async(self, port: int, axis: int) -> int:
        """Disables SYNC action 1 and 2 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_disableActionSYNC0SYNC1SYNC2SYNC3_async(self, port: int, axis: int) -> int:
        """Disables SYNC action 0 and 1 and 2 and 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
        """
    async def _Motion_splitPulse1_async(self, port: int, axis: int, pulse_width: int, pulse_period: int) -> int:
        """Sets the width and the period of split pulses.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            pulse_width: width in the chip's unit, 0 to 65535.
            pulse_period: period in the chip's unit, 0 to 65535.
        """
    async def _Motion_setGPIOValue_async(self, port: int, axis: int, mask: int, value: int) -> int:
        """Drives general-purpose outputs.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            mask: lines to drive, 0 to 255.
            value: their levels, 0 to 255.
        """
    async def _Motion_setPIOSignal1_async(self, port: int, axis: int, state: int) -> int:
        """Sets the first word of signal functions to its one value.

        Args:
            port: connector of the controller as the device counts it.
            axis: mask of axes, 0 to 15, sent as it is.
            state: without effect (compatibility note 12).
        """
    async def _Motion_writeRR3_async(self, port: int, axis: int, page: int) -> int:
        """Reads a page of read register 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            page: page, 0 or 1.
        """
    async def _Motion_releaseDrivingStart_async(self, port: int, axis: int) -> int:
        """Releases the drives that are held. The object must have a check of its own for the mask (compatibility note 11).

        Args:
            port: connector of the controller as the device counts it.
            axis: mask of axes, 0 to 15, sent as it is.
        """
    async def Motion_setLogicalPosi_async(self, port: int, axis: int, counter: int) -> int:
        """Sets the logical position counter. On the chassis the awaitable form takes the slot (compatibility note 13).

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3, sent as a mask.
            counter: position in pulses, -2147483648 to 2147483647.
        """

class MCX514Based:
    """The four-axis motion controller."""
    def _checkMCX514StopMode(self, mode: int) -> None:
        """Raises MotionStopModeError unless `mode` is 0 or 1.

        Args:
            mode: 0 or 1.
        """
    def _checkMCX514SearchType(self, search_type: int) -> None:
        """Raises MotionSearchTypeError unless `search_type` is 0, 1 or 2.

        Args:
            search_type: 0, 1 or 2.
        """
    def _checkMCX514SearchDirection(self, direction: int) -> None:
        """Raises MotionSearchTypeError unless `direction` is 0 or 1.

        Args:
            direction: 0 or 1.
        """
    def _checkMCX514Enable(self, status: int) -> None:
        """Raises MotionEnableError unless `status` is 0 or 1.

        Args:
            status: 0 or 1.
        """
    def _checkMCX514StepperOutput(self, status: int) -> None:
        """Raises MotionStepperOutputError unless `status` is 0 or 1.

        Args:
            status: 0 or 1.
        """
    def _checkMCX514Direction(self, direction: int) -> None:
        """Raises MotionDirectionError unless `direction` is 0 or 1.

        Args:
            direction: 0 or 1.
        """
    def _checkMCX514Polarity(self, status: int) -> None:
        """Raises MotionPolarityError unless `status` is 0 or 1.

        Args:
            status: 0 or 1.
        """
    def _checkMCX514CaptureType(self, status: int) -> None:
        """Raises MotionCaptureTypeError unless `status` is 0 or 1.

        Args:
            status: 0 or 1.
        """
    def _checkMCX514CaptureMode(self, status: int) -> None:
        """Raises MotionCaptureModeError unless `status` is 0 or 1.

        Args:
            status: 0 or 1.
        """
    def _checkMCX514BreakPointMode(self, status: int) -> None:
        """Raises MotionBreakPointModeError unless `status` is 0 or 1.

        Args:
            status: 0 or 1.
        """
    def _checkMCX514OperationMode(self, status: int) -> None:
        """Raises MotionOperationModeError unless `status` is 0, 1 or 2.

        Args:
            status: 0, 1 or 2.
        """
    def _checkMCX514AccelerationMode(self, status: int) -> None:
        """Raises MotionAccelerationModeError unless `status` is 0, 1 or 2.

        Args:
            status: 0, 1 or 2.
        """
    def _checkMCX514MotionPort(self, port: int) -> None:
        """Raises MotionPortNotAvaliable unless the model has the connector.

        Args:
            port: connector as the device counts it.
        """
    def _checkMCX514Axis(self, axis: int, mode: bool = True) -> Any:
        """Raises InputTypeNotCorrectError unless an int; returns MotionAxisError for an axis outside 0-3 (compatibility note 10).

        Args:
            axis: axis.
            mode: whether to check the number too.
        """
    def _getAxisHandle(self, axis: int) -> MotionAxis:
        """The record of an axis.

        Args:
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
        """

class MCX514Module(MCX514Driver, MCX514Based):
    """The four-axis motion controller."""
    motion_dict: dict[int, list[int]]
    inifile: str
    inimode: str
    iniconfig: Any
    def __init__(self, motion_dict: dict[int, list[int]]) -> None:
        """Sets the resources of the model.

        Args:
            motion_dict: connectors of the model's controllers.
        """
    def _Motion_setHomeLimitEnable(self, port: int, axis: int, home_enable: int, timeout: float = 3) -> int:
        """Sets the home input: bit 3 of write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            home_enable: 1 on, 0 off.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setHomePolarity(self, port: int, axis: int, home_polarity: int, timeout: float = 3) -> int:
        """Sets the home level: bit 2 of write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            home_polarity: 1 active high, 0 active low.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setInpositionLimitEnable(self, port: int, axis: int, inposition_enable: int, timeout: float = 3) -> int:
        """Sets the in-position input: bit 7 of write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            inposition_enable: 1 on, 0 off.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setInpositionPolarity(self, port: int, axis: int, inposition_polarity: int, timeout: float = 3) -> int:
        """Sets the in-position level: bit 6 of write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            inposition_polarity: 1 active high, 0 active low.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setAlarmLimitEnable(self, port: int, axis: int, alarm_enable: int, timeout: float = 3) -> int:
        """Sets the servo alarm: bit 9 of write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            alarm_enable: 1 on, 0 off.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setAlarmPolarity(self, port: int, axis: int, alarm_polarity: int, timeout: float = 3) -> int:
        """Sets the alarm level: bit 8 of write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            alarm_polarity: 1 active high, 0 active low.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setLimitPolarity(self, port: int, axis: int, limit_polarity: int, timeout: float = 3) -> int:
        """Sets the level of both limit inputs: bit 10 of write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            limit_polarity: 1 active high, 0 active low.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setInstantLimitStop(self, port: int, axis: int, stop: int, timeout: float = 3) -> int:
        """Sets the stop at a limit: bit 12 of write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            stop: 1 at once, 0 with deceleration.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setEncoderDirection(self, port: int, axis: int, encoder_direction: int, timeout: float = 3) -> int:
        """Sets the counting direction of the encoder: bit 11 of write register 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            encoder_direction: 1 inverse, 0 not.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setLimitEnable(self, port: int, axis: int, forward_enable: int, reverse_enable: int, timeout: float = 3) -> int:
        """Sets the limit inputs: either one switches both on (compatibility note 14).

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            forward_enable: 1 on, 0 off.
            reverse_enable: 1 on, 0 off.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setAxisModeAndDirection(self, port: int, axis: int, stepper_output: int, axis_direction: int, timeout: float = 3) -> int:
        """Sets the pulse output. S-curve and asymmetry are off afterwards.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            stepper_output: 0 pulse and direction, 1 two pulses.
            axis_direction: 1 inverse, 0 not.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeAcceleration(self, port: int, axis: int, acceleration: int = 100000, deceleration: int = 100000, timeout: float = 3) -> int:
        """Sets both rates, and the shape that the record wants.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            acceleration: pulses per second squared.
            deceleration: pulses per second squared.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeVelocity(self, port: int, axis: int, velocity: int = 10000, timeout: float = 3) -> int:
        """Sets the speed, and a starting speed that goes with the stored acceleration.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            velocity: pulses per second; the sign is only remembered.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_enableServoOn(self, port: int, axis: int, en_servo_on: int, timeout: float = 3) -> int:
        """Switches the servo output. The logical counter is rewritten with its own value.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            en_servo_on: 1 on, 0 off.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_sendAllConfiguration(self, port: int, axis: int, timeout: float = 3) -> int:
        """Sends the settings of an axis, all but the encoder's direction.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_open(self, port: int, timeout: float = 3) -> int:
        """Makes a connector ready.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_close(self, port: int, timeout: float = 3) -> int:
        """Ends the use of a connector; nothing is sent.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfgAlarm(self, port: int, axis: int, en_alarm: int, alarm_polarity: int, timeout: float = 3) -> int:
        """Configures the servo alarm.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            en_alarm: 1 on, 0 off.
            alarm_polarity: 1 active high, 0 active low.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfgHome(self, port: int, axis: int, en_home: int, home_polarity: int, timeout: float = 3) -> int:
        """Configures the home input.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            en_home: 1 on, 0 off.
            home_polarity: 1 active high, 0 active low.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfgInposi(self, port: int, axis: int, en_inposi: int, inposi_polarity: int, timeout: float = 3) -> int:
        """Configures the in-position input.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            en_inposi: 1 on, 0 off.
            inposi_polarity: 1 active high, 0 active low.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfgLimit(self, port: int, axis: int, en_forward: int, en_reverse: int, limit_polarity: int, timeout: float = 3) -> int:
        """Configures the limit inputs. The chip has one switch and one level for both.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            en_forward: 1 on, 0 off.
            en_reverse: 1 on, 0 off.
            limit_polarity: 1 active high, 0 active low.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfgAxis(self, port: int, axis: int, stepper_output: int, axis_dir: int, encoder_dir: int, servo_on_polarity: int, timeout: float = 3) -> int:
        """Configures pulse output, directions and servo output.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            stepper_output: 0 pulse and direction, 1 two pulses.
            axis_dir: 1 inverse, 0 not.
            encoder_dir: 1 inverse, 0 not.
            servo_on_polarity: 1 active high, 0 active low.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfgEncoder(self, port: int, axis: int, encoder_z_polarity: int, timeout: float = 3) -> int:
        """Configures the encoder's index.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            encoder_z_polarity: 1 active high, 0 active low.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfgJerkAndAccelMode(self, port: int, axis: int, jerk: int, accel_mode: int, timeout: float = 3) -> None:
        """Stores the shape of acceleration, which is sent with the next one. Nothing is sent.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            jerk: change of the acceleration in the chip's unit, 0 to 4294967295.
            accel_mode: 0 trapezoid, 1 or 2 S-curve.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_rstEncoderPosi(self, port: int, axis: int, encoder_posi: int = 0, timeout: float = 3) -> int:
        """Sets both position counters.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            encoder_posi: position in pulses.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_enableServoOn(self, port: int, axis: int, timeout: float = 3) -> int:
        """Switches the servo on. On the chassis it fails in slot 1 (compatibility note 32).

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_enableServoOff(self, port: int, axis: int, timeout: float = 3) -> int:
        """Switches the servo off. On the chassis it fails in slot 1 (compatibility note 32).

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfgCapture(self, port: int, axis: int, capture_type: int, mode: int, timeout: float = 3) -> int:
        """Configures the capture of a position.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            capture_type: edge, 0 or 1.
            mode: position that is captured, 0 or 1, in the chip's numbering.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_enableCapture(self, port: int, axis: int, en_capture: int, timeout: float = 3) -> int:
        """Switches the capture.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            en_capture: 1 on, 0 off.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfgBreakPoint(self, port: int, axis: int, mode: int, breakpoint_polarity: int, start_posi: int, pulse_width: int, pulse_period: int, pulse_number: int, timeout: float = 3) -> int:
        """Configures pulses that an axis gives out from a position on.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            mode: 0 at a position, 1 at a distance from the present one.
            breakpoint_polarity: 1 active high, 0 active low.
            start_posi: first break point, in pulses.
            pulse_width: width in the chip's unit, 0 to 65535.
            pulse_period: period in the chip's unit, 0 to 65535.
            pulse_number: number of pulses, 0 to 65535.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_enableBreakPoint(self, port: int, axis: int, en_break: int, timeout: float = 3) -> int:
        """Switches the break points.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            en_break: 1 on, 0 off.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_getMoveStatus(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads whether a move has ended.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_checkRef(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads whether a reference search has ended.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_getHomeStatus(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the home input. It uses the active level of the forward limit (compatibility note 34).

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_getLimitStatus(self, port: int, axis: int, timeout: float = 3) -> list[int]:
        """Reads both limit inputs.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_readCapturePoint(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the captured position.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_getLogicalPosi(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the logical position counter.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_getEncoderPosi(self, port: int, axis: int, timeout: float = 3) -> int:
        """Reads the encoder's counter.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeTargetPosition(self, port: int, axis: int, target_position: int = 0, timeout: float = 3) -> int:
        """Sets where the next move goes.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            target_position: position or distance in pulses.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeDriveMode(self, port: int, axis: int, operation_mode: int, velocity: int, timeout: float = 3) -> int:
        """Starts a move.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            operation_mode: 0 to the position, 1 by the distance, 2 continuous.
            velocity: its sign is the way of a continuous move.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfgAxisMove(self, port: int, axis: int, mode: int, target_posi: int = 0, velo: int = 10000, accel: int = 100000, decel: int = 100000, timeout: float = 3) -> int:
        """Configures a move.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            mode: 0 to the position, 1 by the distance, 2 continuous.
            target_posi: position or distance in pulses.
            velo: pulses per second; negative is backwards in a continuous move.
            accel: pulses per second squared, 0 to 4294967295.
            decel: pulses per second squared, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_startSingleAxisMove(self, port: int, axis: int, timeout: float = 3) -> int:
        """Starts the configured move of an axis.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_startMultiAxisMove(self, port: int, axis_list: list[int], timeout: float = 3) -> int:
        """Starts the configured moves of axes together. It fails at the release of the axes, which wait for it then, if the object has no `_checkMotionAxis`.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis_list: axes, 0 to 3.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_stop(self, port: int, axis: int, mode: int, timeout: float = 3) -> int:
        """Stops an axis.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            mode: 0 with deceleration, 1 at once.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_overrideAxisPosi(self, port: int, axis: int, new_position: int, timeout: float = 3) -> int:
        """Changes where a move goes while it runs.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            new_position: position or distance in pulses.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_overrideAxisAccel(self, port: int, axis: int, new_accel: int, new_decel: int, timeout: float = 3) -> int:
        """Changes the acceleration of a move.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            new_accel: pulses per second squared.
            new_decel: pulses per second squared.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_overrideAxisVelocity(self, port: int, axis: int, new_velo: int, timeout: float = 3) -> int:
        """Changes the speed of a move while it runs.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            new_velo: pulses per second; another sign turns a continuous move.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfgFindRef(self, port: int, axis: int, search_type: int, search_dir: int, search_velo: int = 10000, search_accle: int = 100000, approach_velo_percent: float = 20, en_reset_posi: int = 0, offset_posi: int = 0, timeout: float = 3) -> int:
        """Configures a reference search.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            search_type: 0 home switch, 1 index, 2 limit switch.
            search_dir: 0 forward, 1 reverse.
            search_velo: pulses per second.
            search_accle: pulses per second squared.
            approach_velo_percent: speed near the reference, in percent of the other.
            en_reset_posi: 1 sets the counters to 0 at the end, 0 does not.
            offset_posi: distance from the reference to go at the end, in pulses.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setAutoHome1(self, port: int, axis: int, search_type: int, initial_search_direction: int, final_approach_direction: int, approach_velocity_percent: float, offset_position: int, timeout: float = 3) -> int:
        """Sets the first mode word of the reference search.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            search_type: 0, 1, else as 2.
            initial_search_direction: 0 forward, else reverse.
            final_approach_direction: 0 forward, 1 reverse.
            approach_velocity_percent: speed near the reference, in percent.
            offset_position: distance from the reference to go at the end, in pulses.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setAutoHome2(self, port: int, axis: int, reset_position_enable: int, timeout: float = 3) -> int:
        """Sets the second mode word of the reference search.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            reset_position_enable: 1 sets the counters to 0 at the end.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeHomeSpeed(self, port: int, axis: int, approach_velocity_percent: float, search_velocity: int, timeout: float = 3) -> int:
        """Sets the speed near the reference, at least 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            approach_velocity_percent: speed near the reference, in percent.
            search_velocity: pulses per second.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeOffsetPosition(self, port: int, axis: int, offset_position: int, initial_search_direction: int, timeout: float = 3) -> int:
        """Sets the distance to go at the end, backwards for direction 0.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            offset_position: distance from the reference to go at the end, in pulses.
            initial_search_direction: 0 forward, else reverse.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_findRef(self, port: int, axis: int, timeout: float = 3) -> int:
        """Starts the configured reference search.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfg2AxisLinearInterpo(self, port: int, axis1: int, dest_posi1: int, axis2: int, dest_posi2: int, speed: int = 10000, accel: int = 100000, decel: int = 100000, timeout: float = 3) -> int:
        """Configures a line of 2 axes.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis1: axis, 0 to 3.
            dest_posi1: its distance in pulses.
            axis2: axis, 0 to 3.
            dest_posi2: its distance in pulses.
            speed: pulses per second along the path.
            accel: pulses per second squared.
            decel: pulses per second squared.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfg3AxisLinearInterpo(self, port: int, axis1: int, dest_posi1: int, axis2: int, dest_posi2: int, axis3: int, dest_posi3: int, speed: int = 10000, accel: int = 100000, decel: int = 100000, timeout: float = 3) -> int:
        """Configures a line of 3 axes.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis1: axis, 0 to 3.
            dest_posi1: its distance in pulses.
            axis2: axis, 0 to 3.
            dest_posi2: its distance in pulses.
            axis3: axis, 0 to 3.
            dest_posi3: its distance in pulses.
            speed: pulses per second along the path.
            accel: pulses per second squared.
            decel: pulses per second squared.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfg4AxisLinearInterpo(self, port: int, axis1: int, dest_posi1: int, axis2: int, dest_posi2: int, axis3: int, dest_posi3: int, axis4: int, dest_posi4: int, speed: int = 10000, accel: int = 100000, decel: int = 100000, timeout: float = 3) -> int:
        """Configures a line of 4 axes.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis1: axis, 0 to 3.
            dest_posi1: its distance in pulses.
            axis2: axis, 0 to 3.
            dest_posi2: its distance in pulses.
            axis3: axis, 0 to 3.
            dest_posi3: its distance in pulses.
            axis4: axis, 0 to 3.
            dest_posi4: its distance in pulses.
            speed: pulses per second along the path.
            accel: pulses per second squared.
            decel: pulses per second squared.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_startLinearInterpo(self, port: int, timeout: float = 3) -> int:
        """Starts the configured line; nothing happens without one.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfgCircularInterpo(self, port: int, x_axis: int, y_axis: int, center_point_x: float, center_point_y: float, finish_point_x: float, finish_point_y: float, dir: int, speed: int = 10000, accel: int = 100000, decel: int = 100000, timeout: float = 3) -> int:
        """Configures an arc of two axes.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            x_axis: axis, 0 to 3.
            y_axis: axis, 0 to 3.
            center_point_x: pulses from the start.
            center_point_y: pulses from the start.
            finish_point_x: pulses from the start.
            finish_point_y: pulses from the start.
            dir: 0 clockwise, 1 counter-clockwise.
            speed: pulses per second along the path.
            accel: pulses per second squared.
            decel: pulses per second squared.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_startCircularInterpo(self, port: int, timeout: float = 3) -> int:
        """Starts the configured arc.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeHelicalInterpolation(self, port: int, finish_point_axis1: float, finish_point_axis2: float, center_point_axis1: float, center_point_axis2: float, enable_axis3: int, pitch_axis3: float, enable_axis4: int, pitch_axis4: float, rotation_number: float, circular_speed: int, circular_direction: int, timeout: float = 3) -> int:
        """Sets all parameters of a helix except those that the chip calculates.

        Args:
            port: connector of the controller as the device counts it.
            finish_point_axis1: pulses from the start.
            finish_point_axis2: pulses from the start.
            center_point_axis1: pulses from the start.
            center_point_axis2: pulses from the start.
            enable_axis3: 1 moves it along.
            pitch_axis3: pulses of axis 2.
            enable_axis4: 1 moves it along.
            pitch_axis4: pulses of axis 3.
            rotation_number: turns, 0 to 65535.
            circular_speed: pulses per second.
            circular_direction: 0 clockwise, 1 counter-clockwise.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfgHelicalInterpo(self, port: int, center_point_x: float, center_point_y: float, finish_point_x: float, finish_point_y: float, en_axis3: int, pitch_axis3: float, en_axis4: int, pitch_axis4: float, rotation_number: float, speed: int, dir: int, calculation_timeout: float, timeout: float = 3) -> int:
        """Configures a helix about axes 0 and 1, and lets the chip calculate it.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            center_point_x: pulses from the start.
            center_point_y: pulses from the start.
            finish_point_x: pulses from the start.
            finish_point_y: pulses from the start.
            en_axis3: 1 moves axis 2 along, 0 does not.
            pitch_axis3: pulses of axis 2.
            en_axis4: 1 moves axis 3 along, 0 does not.
            pitch_axis4: pulses of axis 3.
            rotation_number: turns, 0 to 65535.
            speed: pulses per second along the arc.
            dir: 0 clockwise, 1 counter-clockwise.
            calculation_timeout: milliseconds in which the chip must have calculated; later the old result stays and nothing is raised.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_startHelicalInterpo(self, port: int, timeout: float = 3) -> int:
        """Starts the configured helix.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_INI_convertIntToString(self, key: str, value: Any) -> Any:
        """Value of a setting as it stands in a file.

        Args:
            key: name of a setting.
            value: value of the setting.
        """
    def _Motion_INI_convertStringToInt(self, key: str, label: str) -> Any:
        """Value of a setting from its text.

        Args:
            key: name of a setting.
            label: text in the file.
        """
    def Motion_openCfgFile(self, filename: str = "test.ini") -> int:
        """Chooses the settings file.

        Args:
            filename: name of a file that exists.
        """
    def Motion_saveCfgFile(self) -> int:
        """Saves the settings of all axes to the opened file itself: its links and its owner stay."""
    def Motion_loadCfgFile(self, timeout: float = 3) -> int:
        """Loads the settings of all axes from the opened file, and sends them to connector 0 (compatibility note 26).

        Args:
            timeout: seconds in which the device must answer, above 0.
        """

class MCX514Module_async(MCX514Driver_async, MCX514Based):
    """The four-axis motion controller."""
    def __init__(self, motion_dict: dict[int, list[int]]) -> None:
        """Sets the resources of the model.

        Args:
            motion_dict: connectors of the model's controllers.
        """
    async def _Motion_setHomeLimitEnable_async(self, port: int, axis: int, home_enable: int) -> int:
        """Sets the home input: bit 3 of write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            home_enable: 1 on, 0 off.
        """
    async def _Motion_setHomePolarity_async(self, port: int, axis: int, home_polarity: int) -> int:
        """Sets the home level: bit 2 of write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            home_polarity: 1 active high, 0 active low.
        """
    async def _Motion_setInpositionLimitEnable_async(self, port: int, axis: int, inposition_enable: int) -> int:
        """Sets the in-position input: bit 7 of write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            inposition_enable: 1 on, 0 off.
        """
    async def _Motion_setInpositionPolarity_async(self, port: int, axis: int, inposition_polarity: int) -> int:
        """Sets the in-position level: bit 6 of write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            inposition_polarity: 1 active high, 0 active low.
        """
    async def _Motion_setAlarmLimitEnable_async(self, port: int, axis: int, alarm_enable: int) -> int:
        """Sets the servo alarm: bit 9 of write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            alarm_enable: 1 on, 0 off.
        """
    async def _Motion_setAlarmPolarity_async(self, port: int, axis: int, alarm_polarity: int) -> int:
        """Sets the alarm level: bit 8 of write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            alarm_polarity: 1 active high, 0 active low.
        """
    async def _Motion_setLimitPolarity_async(self, port: int, axis: int, limit_polarity: int) -> int:
        """Sets the level of both limit inputs: bit 10 of write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            limit_polarity: 1 active high, 0 active low.
        """
    async def _Motion_setInstantLimitStop_async(self, port: int, axis: int, stop: int) -> int:
        """Sets the stop at a limit: bit 12 of write register 2.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            stop: 1 at once, 0 with deceleration.
        """
    async def _Motion_setEncoderDirection_async(self, port: int, axis: int, encoder_direction: int) -> int:
        """Sets the counting direction of the encoder: bit 11 of write register 3.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            encoder_direction: 1 inverse, 0 not.
        """
    async def _Motion_setLimitEnable_async(self, port: int, axis: int, forward_enable: int, reverse_enable: int) -> int:
        """Sets the limit inputs: either one switches both on (compatibility note 14).

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            forward_enable: 1 on, 0 off.
            reverse_enable: 1 on, 0 off.
        """
    async def _Motion_setAxisModeAndDirection_async(self, port: int, axis: int, stepper_output: int, axis_direction: int) -> int:
        """Sets the pulse output. S-curve and asymmetry are off afterwards.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            stepper_output: 0 pulse and direction, 1 two pulses.
            axis_direction: 1 inverse, 0 not.
        """
    async def _Motion_writeAcceleration_async(self, port: int, axis: int, acceleration: int = 100000, deceleration: int = 100000) -> int:
        """Sets both rates, and the shape that the record wants.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            acceleration: pulses per second squared.
            deceleration: pulses per second squared.
        """
    async def _Motion_writeVelocity_async(self, port: int, axis: int, velocity: int = 10000) -> int:
        """Sets the speed, and a starting speed that goes with the stored acceleration.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            velocity: pulses per second; the sign is only remembered.
        """
    async def _Motion_enableServoOn_async(self, port: int, axis: int, en_servo_on: int) -> int:
        """Switches the servo output. The logical counter is rewritten with its own value.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            en_servo_on: 1 on, 0 off.
        """
    async def _Motion_sendAllConfiguration_async(self, port: int, axis: int) -> int:
        """Sends the settings of an axis, all but the encoder's direction.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
        """
    async def Motion_open_async(self, port: int) -> int:
        """Makes a connector ready.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
        """
    async def Motion_close_async(self, port: int) -> int:
        """Ends the use of a connector; nothing is sent.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
        """
    async def Motion_cfgAlarm_async(self, port: int, axis: int, en_alarm: int, alarm_polarity: int) -> int:
        """Configures the servo alarm.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            en_alarm: 1 on, 0 off.
            alarm_polarity: 1 active high, 0 active low.
        """
    async def Motion_cfgHome_async(self, port: int, axis: int, en_home: int, home_polarity: int) -> int:
        """Configures the home input.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            en_home: 1 on, 0 off.
            home_polarity: 1 active high, 0 active low.
        """
    async def Motion_cfgInposi_async(self, port: int, axis: int, en_inposi: int, inposi_polarity: int) -> int:
        """Configures the in-position input.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            en_inposi: 1 on, 0 off.
            inposi_polarity: 1 active high, 0 active low.
        """
    async def Motion_cfgLimit_async(self, port: int, axis: int, en_forward: int, en_reverse: int, limit_polarity: int) -> int:
        """Configures the limit inputs. The chip has one switch and one level for both.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            en_forward: 1 on, 0 off.
            en_reverse: 1 on, 0 off.
            limit_polarity: 1 active high, 0 active low.
        """
    async def Motion_cfgAxis_async(self, port: int, axis: int, stepper_output: int, axis_dir: int, encoder_dir: int, servo_on_polarity: int) -> int:
        """Configures pulse output, directions and servo output.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            stepper_output: 0 pulse and direction, 1 two pulses.
            axis_dir: 1 inverse, 0 not.
            encoder_dir: 1 inverse, 0 not.
            servo_on_polarity: 1 active high, 0 active low.
        """
    async def Motion_cfgEncoder_async(self, port: int, axis: int, encoder_z_polarity: int) -> int:
        """Configures the encoder's index.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            encoder_z_polarity: 1 active high, 0 active low.
        """
    async def Motion_cfgJerkAndAccelMode_async(self, port: int, axis: int, jerk: int, accel_mode: int) -> None:
        """Stores the shape of acceleration, which is sent with the next one. Nothing is sent.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            jerk: change of the acceleration in the chip's unit, 0 to 4294967295.
            accel_mode: 0 trapezoid, 1 or 2 S-curve.
        """
    async def Motion_rstEncoderPosi_async(self, port: int, axis: int, encoder_posi: int = 0) -> int:
        """Sets both position counters.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            encoder_posi: position in pulses.
        """
    async def Motion_enableServoOn_async(self, port: int, axis: int) -> int:
        """Switches the servo on. On the chassis it fails in slot 1 (compatibility note 32).

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
        """
    async def Motion_enableServoOff_async(self, port: int, axis: int) -> int:
        """Switches the servo off. On the chassis it fails in slot 1 (compatibility note 32).

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
        """
    async def Motion_cfgCapture_async(self, port: int, axis: int, capture_type: int, mode: int) -> int:
        """Configures the capture of a position.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            capture_type: edge, 0 or 1.
            mode: position that is captured, 0 or 1, in the chip's numbering.
        """
    async def Motion_enableCapture_async(self, port: int, axis: int, en_capture: int) -> int:
        """Switches the capture.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            en_capture: 1 on, 0 off.
        """
    async def Motion_cfgBreakPoint_async(self, port: int, axis: int, mode: int, breakpoint_polarity: int, start_posi: int, pulse_width: int, pulse_period: int, pulse_number: int) -> int:
        """Configures pulses that an axis gives out from a position on.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            mode: 0 at a position, 1 at a distance from the present one.
            breakpoint_polarity: 1 active high, 0 active low.
            start_posi: first break point, in pulses.
            pulse_width: width in the chip's unit, 0 to 65535.
            pulse_period: period in the chip's unit, 0 to 65535.
            pulse_number: number of pulses, 0 to 65535.
        """
    async def Motion_enableBreakPoint_async(self, port: int, axis: int, en_break: int) -> int:
        """Switches the break points.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            en_break: 1 on, 0 off.
        """
    async def Motion_getMoveStatus_async(self, port: int, axis: int) -> int:
        """Reads whether a move has ended.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
        """
    async def Motion_checkRef_async(self, port: int, axis: int) -> int:
        """Reads whether a reference search has ended.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
        """
    async def Motion_getHomeStatus_async(self, port: int, axis: int) -> int:
        """Reads the home input. It uses the active level of the forward limit (compatibility note 34).

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
        """
    async def Motion_getLimitStatus_async(self, port: int, axis: int) -> list[int]:
        """Reads both limit inputs.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
        """
    async def Motion_readCapturePoint_async(self, port: int, axis: int) -> int:
        """Reads the captured position.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
        """
    async def Motion_getLogicalPosi_async(self, port: int, axis: int) -> int:
        """Reads the logical position counter.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
        """
    async def Motion_getEncoderPosi_async(self, port: int, axis: int) -> int:
        """Reads the encoder's counter.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
        """
    async def _Motion_writeTargetPosition_async(self, port: int, axis: int, target_position: int = 0) -> int:
        """Sets where the next move goes.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            target_position: position or distance in pulses.
        """
    async def _Motion_writeDriveMode_async(self, port: int, axis: int, operation_mode: int, velocity: int) -> int:
        """Starts a move.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            operation_mode: 0 to the position, 1 by the distance, 2 continuous.
            velocity: its sign is the way of a continuous move.
        """
    async def Motion_cfgAxisMove_async(self, port: int, axis: int, mode: int, target_posi: int = 0, velo: int = 10000, accel: int = 100000, decel: int = 100000) -> int:
        """Configures a move.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            mode: 0 to the position, 1 by the distance, 2 continuous.
            target_posi: position or distance in pulses.
            velo: pulses per second; negative is backwards in a continuous move.
            accel: pulses per second squared, 0 to 4294967295.
            decel: pulses per second squared, 0 to 4294967295.
        """
    async def Motion_startSingleAxisMove_async(self, port: int, axis: int) -> int:
        """Starts the configured move of an axis.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
        """
    async def Motion_startMultiAxisMove_async(self, port: int, axis_list: list[int]) -> int:
        """Starts the configured moves of axes together. It fails at the release of the axes, which wait for it then, if the object has no `_checkMotionAxis`.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis_list: axes, 0 to 3.
        """
    async def Motion_stop_async(self, port: int, axis: int, mode: int) -> int:
        """Stops an axis.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            mode: 0 with deceleration, 1 at once.
        """
    async def Motion_overrideAxisPosi_async(self, port: int, axis: int, new_position: int) -> int:
        """Changes where a move goes while it runs.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            new_position: position or distance in pulses.
        """
    async def Motion_overrideAxisAccel_async(self, port: int, axis: int, new_accel: int, new_decel: int) -> int:
        """Changes the acceleration of a move.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            new_accel: pulses per second squared.
            new_decel: pulses per second squared.
        """
    async def Motion_overrideAxisVelocity_async(self, port: int, axis: int, new_velo: int) -> int:
        """Changes the speed of a move while it runs.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            new_velo: pulses per second; another sign turns a continuous move.
        """
    async def Motion_cfgFindRef_async(self, port: int, axis: int, search_type: int, search_dir: int, search_velo: int = 10000, search_accle: int = 100000, approach_velo_percent: float = 20, en_reset_posi: int = 0, offset_posi: int = 0) -> int:
        """Configures a reference search.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            search_type: 0 home switch, 1 index, 2 limit switch.
            search_dir: 0 forward, 1 reverse.
            search_velo: pulses per second.
            search_accle: pulses per second squared.
            approach_velo_percent: speed near the reference, in percent of the other.
            en_reset_posi: 1 sets the counters to 0 at the end, 0 does not.
            offset_posi: distance from the reference to go at the end, in pulses.
        """
    async def _Motion_setAutoHome1_async(self, port: int, axis: int, search_type: int, initial_search_direction: int, final_approach_direction: int, approach_velocity_percent: float, offset_position: int) -> int:
        """Sets the first mode word of the reference search.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            search_type: 0, 1, else as 2.
            initial_search_direction: 0 forward, else reverse.
            final_approach_direction: 0 forward, 1 reverse.
            approach_velocity_percent: speed near the reference, in percent.
            offset_position: distance from the reference to go at the end, in pulses.
        """
    async def _Motion_setAutoHome2_async(self, port: int, axis: int, reset_position_enable: int) -> int:
        """Sets the second mode word of the reference search.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            reset_position_enable: 1 sets the counters to 0 at the end.
        """
    async def _Motion_writeHomeSpeed_async(self, port: int, axis: int, approach_velocity_percent: float, search_velocity: int) -> int:
        """Sets the speed near the reference, at least 1.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            approach_velocity_percent: speed near the reference, in percent.
            search_velocity: pulses per second.
        """
    async def _Motion_writeOffsetPosition_async(self, port: int, axis: int, offset_position: int, initial_search_direction: int) -> int:
        """Sets the distance to go at the end, backwards for direction 0.

        Args:
            port: connector of the controller as the device counts it.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
            offset_position: distance from the reference to go at the end, in pulses.
            initial_search_direction: 0 forward, else reverse.
        """
    async def Motion_findRef_async(self, port: int, axis: int) -> int:
        """Starts the configured reference search.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis: axis, 0 to 3; a further number is not refused and shares the last record.
        """
    async def Motion_cfg2AxisLinearInterpo_async(self, port: int, axis1: int, dest_posi1: int, axis2: int, dest_posi2: int, speed: int = 10000, accel: int = 100000, decel: int = 100000) -> int:
        """Configures a line of 2 axes.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis1: axis, 0 to 3.
            dest_posi1: its distance in pulses.
            axis2: axis, 0 to 3.
            dest_posi2: its distance in pulses.
            speed: pulses per second along the path.
            accel: pulses per second squared.
            decel: pulses per second squared.
        """
    async def Motion_cfg3AxisLinearInterpo_async(self, port: int, axis1: int, dest_posi1: int, axis2: int, dest_posi2: int, axis3: int, dest_posi3: int, speed: int = 10000, accel: int = 100000, decel: int = 100000) -> int:
        """Configures a line of 3 axes.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis1: axis, 0 to 3.
            dest_posi1: its distance in pulses.
            axis2: axis, 0 to 3.
            dest_posi2: its distance in pulses.
            axis3: axis, 0 to 3.
            dest_posi3: its distance in pulses.
            speed: pulses per second along the path.
            accel: pulses per second squared.
            decel: pulses per second squared.
        """
    async def Motion_cfg4AxisLinearInterpo_async(self, port: int, axis1: int, dest_posi1: int, axis2: int, dest_posi2: int, axis3: int, dest_posi3: int, axis4: int, dest_posi4: int, speed: int = 10000, accel: int = 100000, decel: int = 100000) -> int:
        """Configures a line of 4 axes.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            axis1: axis, 0 to 3.
            dest_posi1: its distance in pulses.
            axis2: axis, 0 to 3.
            dest_posi2: its distance in pulses.
            axis3: axis, 0 to 3.
            dest_posi3: its distance in pulses.
            axis4: axis, 0 to 3.
            dest_posi4: its distance in pulses.
            speed: pulses per second along the path.
            accel: pulses per second squared.
            decel: pulses per second squared.
        """
    async def Motion_startLinearInterpo_async(self, port: int) -> int:
        """Starts the configured line; nothing happens without one.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
        """
    async def Motion_cfgCircularInterpo_async(self, port: int, x_axis: int, y_axis: int, center_point_x: float, center_point_y: float, finish_point_x: float, finish_point_y: float, dir: int, speed: int = 10000, accel: int = 100000, decel: int = 100000) -> int:
        """Configures an arc of two axes.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            x_axis: axis, 0 to 3.
            y_axis: axis, 0 to 3.
            center_point_x: pulses from the start.
            center_point_y: pulses from the start.
            finish_point_x: pulses from the start.
            finish_point_y: pulses from the start.
            dir: 0 clockwise, 1 counter-clockwise.
            speed: pulses per second along the path.
            accel: pulses per second squared.
            decel: pulses per second squared.
        """
    async def Motion_startCircularInterpo_async(self, port: int) -> int:
        """Starts the configured arc.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
        """
    async def _Motion_writeHelicalInterpolation_async(self, port: int, finish_point_axis1: float, finish_point_axis2: float, center_point_axis1: float, center_point_axis2: float, enable_axis3: int, pitch_axis3: float, enable_axis4: int, pitch_axis4: float, rotation_number: float, circular_speed: int, circular_direction: int) -> int:
        """Sets all parameters of a helix except those that the chip calculates.

        Args:
            port: connector of the controller as the device counts it.
            finish_point_axis1: pulses from the start.
            finish_point_axis2: pulses from the start.
            center_point_axis1: pulses from the start.
            center_point_axis2: pulses from the start.
            enable_axis3: 1 moves it along.
            pitch_axis3: pulses of axis 2.
            enable_axis4: 1 moves it along.
            pitch_axis4: pulses of axis 3.
            rotation_number: turns, 0 to 65535.
            circular_speed: pulses per second.
            circular_direction: 0 clockwise, 1 counter-clockwise.
        """
    async def Motion_cfgHelicalInterpo_async(self, port: int, center_point_x: float, center_point_y: float, finish_point_x: float, finish_point_y: float, en_axis3: int, pitch_axis3: float, en_axis4: int, pitch_axis4: float, rotation_number: float, speed: int, dir: int, calculation_timeout: float) -> int:
        """Configures a helix about axes 0 and 1, and lets the chip calculate it.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
            center_point_x: pulses from the start.
            center_point_y: pulses from the start.
            finish_point_x: pulses from the start.
            finish_point_y: pulses from the start.
            en_axis3: 1 moves axis 2 along, 0 does not.
            pitch_axis3: pulses of axis 2.
            en_axis4: 1 moves axis 3 along, 0 does not.
            pitch_axis4: pulses of axis 3.
            rotation_number: turns, 0 to 65535.
            speed: pulses per second along the arc.
            dir: 0 clockwise, 1 counter-clockwise.
            calculation_timeout: milliseconds in which the chip must have calculated; later the old result stays and nothing is raised.
        """
    async def Motion_startHelicalInterpo_async(self, port: int) -> int:
        """Starts the configured helix.

        Args:
            port: connector of the controller, 0; on the chassis the slot, 1, 2 or 4.
        """
    def _Motion_INI_convertIntToString(self, key: str, value: Any) -> Any:
        """Value of a setting as it stands in a file.

        Args:
            key: name of a setting.
            value: value of the setting.
        """
    def _Motion_INI_convertStringToInt(self, key: str, label: str) -> Any:
        """Value of a setting from its text.

        Args:
            key: name of a setting.
            label: text in the file.
        """
    async def Motion_openCfgFile_async(self, filename: str = "test.ini") -> int:
        """Chooses the settings file.

        Args:
            filename: name of a file that exists.
        """
    async def Motion_saveCfgFile_async(self) -> int:
        """Saves the settings of all axes to the opened file itself: its links and its owner stay."""
    async def Motion_loadCfgFile_async(self) -> int:
        """Loads the settings of all axes from the opened file, and sends them to connector 0 (compatibility note 26)."""

class TMC5240Based:
    """The stepper drive."""
    TMC5240_main_dict: dict[str, list[int]]
    TMC5240_default_dict: dict[str, list[int]]
    status_bit0_resetflag: int
    status_bit1_driver_err: int
    status_bit2_sg2: int
    status_bit3_standstill: int
    status_bit4_velocityreach: int
    status_bit5_positionreach: int
    status_bit6_stopl: int
    status_bit7_stopr: int
    def __init__(self, acceleration: int = 100000, deceleration: int = 100000) -> None:
        """Makes both maps.

        Args:
            acceleration: pulses per second squared.
            deceleration: pulses per second squared.
        """
    def _TMC5240_getSPIStatus(self, status_byte: int) -> int:
        """Keeps the bits of the chip's status.

        Args:
            status_byte: the chip's status, 0 to 255.
        """
    def _checkTMC5240Port(self, port: int) -> None:
        """Raises PAWLPortNotAvaliable unless the model has the port.

        Args:
            port: port of the drive, 0.
        """

class TMC5240Module(Packet, MotionAxis, TMC5240Based):
    """The stepper drive."""
    pawl_dict: dict[int, list[int]]
    axis: MotionAxis
    motion_ini: MotionInifile
    inifile: str
    inimode: str
    iniconfig: Any
    def __init__(self, pawl_dict: dict[int, list[int]]) -> None:
        """Sets the resources of the model.

        Args:
            pawl_dict: ports of the model's drive.
        """
    def _Motion_read(self, port: int, reg_addr: int, timeout: float = 3) -> bytes:
        """Reads a register, and keeps the chip's status.

        Args:
            port: port of the drive, 0.
            reg_addr: register, one of the PAWL_ constants.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_write(self, port: int, reg_addr: int, data: int, timeout: float = 3) -> int:
        """Writes a register.

        Args:
            port: port of the drive, 0.
            reg_addr: register, one of the PAWL_ constants.
            data: 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_readDI(self, port: int, timeout: float = 3) -> bytes:
        """Reads the digital inputs.

        Args:
            port: digital port.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_writeDO(self, port: int, pin: int, value: int, timeout: float = 3) -> int:
        """Drives a digital output.

        Args:
            port: digital port.
            pin: pin, 0 to 7.
            value: 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_clearFault(self, port: int, timeout: float = 3) -> int:
        """Clears the faults of the general status.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setRamp(self, port: int, timeout: float = 3) -> int:
        """Writes the ramp of `TMC5240_main_dict`.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setLimitEnable(self, port: int, forward_enable: int, reverse_enable: int, timeout: float = 3) -> int:
        """Stores which limits are in use; nothing is sent.

        Args:
            port: port of the drive, 0.
            forward_enable: 1 on, 0 off.
            reverse_enable: 1 on, 0 off.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setLimitPolarity(self, port: int, limit_polarity: int, timeout: float = 3) -> int:
        """Stores the level of the limits; nothing is sent.

        Args:
            port: port of the drive, 0.
            limit_polarity: 1 active high, 0 active low.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getServeoOnStatus(self, port: int, timeout: float = 3) -> int:
        """Has no effect; nothing is sent.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getInpositionStatus(self, port: int, timeout: float = 3) -> int:
        """Reads whether the position was reached.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setGlobalConfig(self, port: int, value: int, timeout: float = 3) -> int:
        """Writes the general configuration, register 0.

        Args:
            port: port of the drive, 0.
            value: the general configuration, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getGlobalConfig(self, port: int, timeout: float = 3) -> bytes:
        """Reads the general configuration, register 0.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setGlobalStatus(self, port: int, value: int, timeout: float = 3) -> int:
        """Writes the general status, register 1.

        Args:
            port: port of the drive, 0.
            value: the general status, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getGlobalStatus(self, port: int, timeout: float = 3) -> bytes:
        """Reads the general status, register 1.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setRampMode(self, port: int, ramp_mode: int, timeout: float = 3) -> int:
        """Writes the ramp mode, register 32.

        Args:
            port: port of the drive, 0.
            ramp_mode: the ramp mode, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_resetPosition(self, port: int, position: int, timeout: float = 3) -> int:
        """Writes the position, register 33.

        Args:
            port: port of the drive, 0.
            position: the position, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_readCurrentPosition(self, port: int, timeout: float = 3) -> bytes:
        """Reads the position, register 33.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_readCurrentVelocity(self, port: int, timeout: float = 3) -> bytes:
        """Reads the speed, register 34.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setLimitSwitch(self, port: int, value: int, timeout: float = 3) -> int:
        """Writes the mode of the limit switches, register 52.

        Args:
            port: port of the drive, 0.
            value: the mode of the limit switches, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_getLimitSwitch(self, port: int, timeout: float = 3) -> bytes:
        """Reads the mode of the limit switches, register 52.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setEncoderPosition(self, port: int, position: int, timeout: float = 3) -> int:
        """Writes the encoder's position, register 57.

        Args:
            port: port of the drive, 0.
            position: the encoder's position, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_readEncoderPosition(self, port: int, timeout: float = 3) -> bytes:
        """Reads the encoder's position, register 57.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_setEncoderDirection(self, port: int, direction: int, timeout: float = 3) -> int:
        """Writes the encoder's constant, register 58.

        Args:
            port: port of the drive, 0.
            direction: the encoder's constant, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_readEncoderDirection(self, port: int, timeout: float = 3) -> bytes:
        """Reads the encoder's constant, register 58.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_startVelocticyMove(self, port: int, speed: int, dir: int, acceleration: int, deceleration: int, timeout: float = 3) -> int:
        """Starts a move at a speed.

        Args:
            port: port of the drive, 0.
            speed: pulses per second, 0 to 4294967295.
            dir: in the firmware's numbering; its low byte is sent.
            acceleration: pulses per second squared, 0 to 4294967295.
            deceleration: pulses per second squared, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_startPositionMove(self, port: int, position: int, speed: int, acceleration: int, deceleration: int, mode: int, timeout: float = 3) -> int:
        """Starts a move to a position.

        Args:
            port: port of the drive, 0.
            position: pulses, -2147483648 to 2147483647.
            speed: pulses per second, 0 to 4294967295.
            acceleration: pulses per second squared, 0 to 4294967295.
            deceleration: pulses per second squared, 0 to 4294967295.
            mode: in the firmware's numbering, 0 to 255.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_startScanMove(self, port: int, position_0: int, position_1: int, speed: int, acceleration: int, timeout: float = 3) -> int:
        """Starts a move to and fro between two positions.

        Args:
            port: port of the drive, 0.
            position_0: pulses, -2147483648 to 2147483647.
            position_1: pulses, -2147483648 to 2147483647.
            speed: pulses per second, 0 to 4294967295.
            acceleration: pulses per second squared, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_startFindLimit(self, port: int, mode: int, searching_speed: int, approaching_speed: int, acceleration: int, offset: int, reset_position: str, timeout: float = 3) -> int:
        """Starts the search of a limit.

        Args:
            port: port of the drive, 0.
            mode: in the firmware's numbering; its low byte is sent.
            searching_speed: pulses per second, 0 to 4294967295.
            approaching_speed: pulses per second near the reference, 0 to 4294967295.
            acceleration: pulses per second squared, 0 to 4294967295.
            offset: distance to go at the end, in pulses.
            reset_position: "true" sets the position to 0 at the end.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_startFindHome(self, port: int, searching_speed: int, approaching_speed: int, acceleration: int, search_direction: int, approach_direction: int, offset: int, reset_position: str, timeout: float = 3) -> int:
        """Starts the search of the home input.

        Args:
            port: port of the drive, 0.
            searching_speed: pulses per second, 0 to 4294967295.
            approaching_speed: pulses per second near the reference, 0 to 4294967295.
            acceleration: pulses per second squared, 0 to 4294967295.
            search_direction: in the firmware's numbering; its low byte is sent.
            approach_direction: in the firmware's numbering; its low byte is sent.
            offset: distance to go at the end, in pulses.
            reset_position: "true" sets the position to 0 at the end.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_startFindZPolarity(self, port: int, searching_speed: int, approaching_speed: int, acceleration: int, search_direction: int, approach_direction: int, offset: int, reset_position: str, timeout: float = 3) -> int:
        """Starts the search of the encoder's index.

        Args:
            port: port of the drive, 0.
            searching_speed: pulses per second, 0 to 4294967295.
            approaching_speed: pulses per second near the reference, 0 to 4294967295.
            acceleration: pulses per second squared, 0 to 4294967295.
            search_direction: in the firmware's numbering; its low byte is sent.
            approach_direction: in the firmware's numbering; its low byte is sent.
            offset: distance to go at the end, in pulses.
            reset_position: "true" sets the position to 0 at the end.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_getProcessState(self, port: int, timeout: float = 3) -> tuple[int, bytes]:
        """Reads the state of the move or search.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_stopProcess(self, port: int, timeout: float = 3) -> int:
        """Stops the move or search.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_resetFactory(self, port: int, timeout: float = 3) -> int:
        """Sets the drive's parameters to the factory's.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_getLimitStatus(self, port: int, timeout: float = 3) -> list[int]:
        """Reads limits and home, from digital port 1.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_open(self, port: int, timeout: float = 3) -> int:
        """Has no effect; nothing is sent.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_close(self, port: int, timeout: float = 3) -> int:
        """Has no effect; nothing is sent.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_enableServoOn(self, port: int, timeout: float = 3) -> int:
        """Switches the servo on, by digital port 2.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_enableServoOff(self, port: int, timeout: float = 3) -> int:
        """Switches the servo off, by digital port 2.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_getAlarmStatus(self, port: int, timeout: float = 3) -> int:
        """Reads whether the chip reports a fault.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_readCurrentVelocity(self, port: int, timeout: float = 3) -> int:
        """Reads the speed.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_readEncoderPosition(self, port: int, timeout: float = 3) -> list[int]:
        """Reads the positions of the encoder and of the motor.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_rstEncoderPosi(self, port: int, encoder_posi: int = 0, timeout: float = 3) -> int:
        """Sets both positions, and holds.

        Args:
            port: port of the drive, 0.
            encoder_posi: position in pulses, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfgEncoder(self, port: int, encoder_dir: int, encoder_posi: int, timeout: float = 3) -> int:
        """Sets both positions and the encoder's constant (compatibility note 16).

        Args:
            port: port of the drive, 0.
            encoder_dir: 0; anything else fails after the positions are set.
            encoder_posi: position in pulses, 0 to 4294967295.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfgAxisDirection(self, port: int, axis_dir: int, timeout: float = 3) -> int:
        """Sets the direction of the motor and of its limits.

        Args:
            port: port of the drive, 0.
            axis_dir: 1 inverse, 0 not.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_cfgLimit(self, port: int, en_forward: int, en_reverse: int, limit_polarity: int, timeout: float = 3) -> int:
        """Configures the limit switches.

        Args:
            port: port of the drive, 0.
            en_forward: 1 on, 0 off.
            en_reverse: 1 on, 0 off.
            limit_polarity: 1 active high, 0 active low.
            timeout: seconds in which the device must answer, above 0.
        """
    def Motion_getParameters(self, port: int, timeout: float = 3) -> int:
        """Reads the parameters into `TMC5240_default_dict`.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_sendAllConfiguration(self, port: int, timeout: float = 3) -> int:
        """Sends directions and limits of the settings.

        Args:
            port: port of the drive, 0.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Motion_INI_convertIntToString(self, key: str, value: Any) -> Any:
        """Value of a setting as it stands in a file.

        Args:
            key: name of a setting.
            value: value of the setting.
        """
    def _Motion_INI_convertStringToInt(self, key: str, label: str) -> Any:
        """Value of a setting from its text.

        Args:
            key: name of a setting.
            label: text in the file.
        """
    def Motion_openCfgFile(self, filename: str = "test.ini") -> int:
        """Chooses the settings file.

        Args:
            filename: name of a file that exists.
        """
    def Motion_saveCfgFile(self) -> int:
        """Saves the settings of all axes to the opened file itself: its links and its owner stay."""
    def Motion_loadCfgFile(self, timeout: float = 3) -> int:
        """Loads the settings of all axes from the opened file, and sends them to connector 0 (compatibility note 26).

        Args:
            timeout: seconds in which the device must answer, above 0.
        """

class TMC5240Module_async(Packet_async, MotionAxis, TMC5240Based):
    """The stepper drive."""
    def __init__(self, pawl_dict: dict[int, list[int]]) -> None:
        """Sets the resources of the model.

        Args:
            pawl_dict: ports of the model's drive.
        """
    async def _Motion_read_async(self, port: int, reg_addr: int) -> bytes:
        """Reads a register, and keeps the chip's status.

        Args:
            port: port of the drive, 0.
            reg_addr: register, one of the PAWL_ constants.
        """
    async def _Motion_write_async(self, port: int, reg_addr: int, data: int) -> int:
        """Writes a register.

        Args:
            port: port of the drive, 0.
            reg_addr: register, one of the PAWL_ constants.
            data: 0 to 4294967295.
        """
    async def _Motion_readDI_async(self, port: int) -> bytes:
        """Reads the digital inputs.

        Args:
            port: digital port.
        """
    async def _Motion_writeDO_async(self, port: int, pin: int, value: int) -> int:
        """Drives a digital output.

        Args:
            port: digital port.
            pin: pin, 0 to 7.
            value: 0 or 1.
        """
    async def _Motion_clearFault_async(self, port: int) -> int:
        """Clears the faults of the general status.

        Args:
            port: port of the drive, 0.
        """
    async def _Motion_setRamp_async(self, port: int) -> int:
        """Writes the ramp of `TMC5240_main_dict`.

        Args:
            port: port of the drive, 0.
        """
    async def _Motion_setLimitEnable_async(self, port: int, forward_enable: int, reverse_enable: int) -> int:
        """Stores which limits are in use; nothing is sent.

        Args:
            port: port of the drive, 0.
            forward_enable: 1 on, 0 off.
            reverse_enable: 1 on, 0 off.
        """
    async def _Motion_setLimitPolarity_async(self, port: int, limit_polarity: int) -> int:
        """Stores the level of the limits; nothing is sent.

        Args:
            port: port of the drive, 0.
            limit_polarity: 1 active high, 0 active low.
        """
    async def _Motion_getServeoOnStatus_async(self, port: int) -> int:
        """Has no effect; nothing is sent.

        Args:
            port: port of the drive, 0.
        """
    async def _Motion_getInpositionStatus_async(self, port: int) -> int:
        """Reads whether the position was reached.

        Args:
            port: port of the drive, 0.
        """
    async def _Motion_setGlobalConfig_async(self, port: int, value: int) -> int:
        """Writes the general configuration, register 0.

        Args:
            port: port of the drive, 0.
            value: the general configuration, 0 to 4294967295.
        """
    async def _Motion_getGlobalConfig_async(self, port: int) -> bytes:
        """Reads the general configuration, register 0.

        Args:
            port: port of the drive, 0.
        """
    async def _Motion_setGlobalStatus_async(self, port: int, value: int) -> int:
        """Writes the general status, register 1.

        Args:
            port: port of the drive, 0.
            value: the general status, 0 to 4294967295.
        """
    async def _Motion_getGlobalStatus_async(self, port: int) -> bytes:
        """Reads the general status, register 1.

        Args:
            port: port of the drive, 0.
        """
    async def _Motion_setRampMode_async(self, port: int, ramp_mode: int) -> int:
        """Writes the ramp mode, register 32.

        Args:
            port: port of the drive, 0.
            ramp_mode: the ramp mode, 0 to 4294967295.
        """
    async def _Motion_resetPosition_async(self, port: int, position: int) -> int:
        """Writes the position, register 33.

        Args:
            port: port of the drive, 0.
            position: the position, 0 to 4294967295.
        """
    async def _Motion_readCurrentPosition_async(self, port: int) -> bytes:
        """Reads the position, register 33.

        Args:
            port: port of the drive, 0.
        """
    async def _Motion_readCurrentVelocity_async(self, port: int) -> bytes:
        """Reads the speed, register 34.

        Args:
            port: port of the drive, 0.
        """
    async def _Motion_setLimitSwitch_async(self, port: int, value: int) -> int:
        """Writes the mode of the limit switches, register 52.

        Args:
            port: port of the drive, 0.
            value: the mode of the limit switches, 0 to 4294967295.
        """
    async def _Motion_getLimitSwitch_async(self, port: int) -> bytes:
        """Reads the mode of the limit switches, register 52.

        Args:
            port: port of the drive, 0.
        """
    async def _Motion_setEncoderPosition_async(self, port: int, position: int) -> int:
        """Writes the encoder's position, register 57.

        Args:
            port: port of the drive, 0.
            position: the encoder's position, 0 to 4294967295.
        """
    async def _Motion_readEncoderPosition_async(self, port: int) -> bytes:
        """Reads the encoder's position, register 57.

        Args:
            port: port of the drive, 0.
        """
    async def _Motion_setEncoderDirection_async(self, port: int, direction: int) -> int:
        """Writes the encoder's constant, register 58.

        Args:
            port: port of the drive, 0.
            direction: the encoder's constant, 0 to 4294967295.
        """
    async def _Motion_readEncoderDirection_async(self, port: int) -> bytes:
        """Reads the encoder's constant, register 58.

        Args:
            port: port of the drive, 0.
        """
    async def Motion_startVelocticyMove_async(self, port: int, speed: int, dir: int, acceleration: int, deceleration: int) -> int:
        """Starts a move at a speed.

        Args:
            port: port of the drive, 0.
            speed: pulses per second, 0 to 4294967295.
            dir: in the firmware's numbering; its low byte is sent.
            acceleration: pulses per second squared, 0 to 4294967295.
            deceleration: pulses per second squared, 0 to 4294967295.
        """
    async def Motion_startPositionMove_async(self, port: int, position: int, speed: int, acceleration: int, deceleration: int, mode: int) -> int:
        """Starts a move to a position.

        Args:
            port: port of the drive, 0.
            position: pulses, -2147483648 to 2147483647.
            speed: pulses per second, 0 to 4294967295.
            acceleration: pulses per second squared, 0 to 4294967295.
            deceleration: pulses per second squared, 0 to 4294967295.
            mode: in the firmware's numbering, 0 to 255.
        """
    async def Motion_startScanMove_async(self, port: int, position_0: int, position_1: int, speed: int, acceleration: int) -> int:
        """Starts a move to and fro between two positions.

        Args:
            port: port of the drive, 0.
            position_0: pulses, -2147483648 to 2147483647.
            position_1: pulses, -2147483648 to 2147483647.
            speed: pulses per second, 0 to 4294967295.
            acceleration: pulses per second squared, 0 to 4294967295.
        """
    async def Motion_startFindLimit_async(self, port: int, mode: int, searching_speed: int, approaching_speed: int, acceleration: int, offset: int, reset_position: str) -> int:
        """Starts the search of a limit.

        Args:
            port: port of the drive, 0.
            mode: in the firmware's numbering; its low byte is sent.
            searching_speed: pulses per second, 0 to 4294967295.
            approaching_speed: pulses per second near the reference, 0 to 4294967295.
            acceleration: pulses per second squared, 0 to 4294967295.
            offset: distance to go at the end, in pulses.
            reset_position: "true" sets the position to 0 at the end.
        """
    async def Motion_startFindHome_async(self, port: int, searching_speed: int, approaching_speed: int, acceleration: int, search_direction: int, approach_direction: int, offset: int, reset_position: str) -> int:
        """Starts the search of the home input.

        Args:
            port: port of the drive, 0.
            searching_speed: pulses per second, 0 to 4294967295.
            approaching_speed: pulses per second near the reference, 0 to 4294967295.
            acceleration: pulses per second squared, 0 to 4294967295.
            search_direction: in the firmware's numbering; its low byte is sent.
            approach_direction: in the firmware's numbering; its low byte is sent.
            offset: distance to go at the end, in pulses.
            reset_position: "true" sets the position to 0 at the end.
        """
    async def Motion_startFindZPolarity_async(self, port: int, searching_speed: int, approaching_speed: int, acceleration: int, search_direction: int, approach_direction: int, offset: int, reset_position: str) -> int:
        """Starts the search of the encoder's index.

        Args:
            port: port of the drive, 0.
            searching_speed: pulses per second, 0 to 4294967295.
            approaching_speed: pulses per second near the reference, 0 to 4294967295.
            acceleration: pulses per second squared, 0 to 4294967295.
            search_direction: in the firmware's numbering; its low byte is sent.
            approach_direction: in the firmware's numbering; its low byte is sent.
            offset: distance to go at the end, in pulses.
            reset_position: "true" sets the position to 0 at the end.
        """
    async def Motion_getProcessState_async(self, port: int) -> tuple[int, bytes]:
        """Reads the state of the move or search.

        Args:
            port: port of the drive, 0.
        """
    async def Motion_stopProcess_async(self, port: int) -> int:
        """Stops the move or search.

        Args:
            port: port of the drive, 0.
        """
    async def Motion_resetFactory_async(self, port: int) -> int:
        """Sets the drive's parameters to the factory's.

        Args:
            port: port of the drive, 0.
        """
    async def Motion_getLimitStatus_async(self, port: int) -> list[int]:
        """Reads limits and home, from digital port 1.

        Args:
            port: port of the drive, 0.
        """
    async def Motion_open_async(self, port: int) -> int:
        """Has no effect; nothing is sent.

        Args:
            port: port of the drive, 0.
        """
    async def Motion_close_async(self, port: int) -> int:
        """Has no effect; nothing is sent.

        Args:
            port: port of the drive, 0.
        """
    async def Motion_enableServoOn_async(self, port: int) -> int:
        """Switches the servo on, by digital port 2.

        Args:
            port: port of the drive, 0.
        """
    async def Motion_enableServoOff_async(self, port: int) -> int:
        """Switches the servo off, by digital port 2.

        Args:
            port: port of the drive, 0.
        """
    async def Motion_getAlarmStatus_async(self, port: int) -> int:
        """Reads whether the chip reports a fault.

        Args:
            port: port of the drive, 0.
        """
    async def Motion_readCurrentVelocity_async(self, port: int) -> int:
        """Reads the speed.

        Args:
            port: port of the drive, 0.
        """
    async def Motion_readEncoderPosition_async(self, port: int) -> list[int]:
        """Reads the positions of the encoder and of the motor.

        Args:
            port: port of the drive, 0.
        """
    async def Motion_rstEncoderPosi_async(self, port: int, encoder_posi: int = 0) -> int:
        """Sets both positions, and holds.

        Args:
            port: port of the drive, 0.
            encoder_posi: position in pulses, 0 to 4294967295.
        """
    async def Motion_cfgEncoder_async(self, port: int, encoder_dir: int, encoder_posi: int) -> int:
        """Sets both positions and the encoder's constant (compatibility note 16).

        Args:
            port: port of the drive, 0.
            encoder_dir: 0; anything else fails after the positions are set.
            encoder_posi: position in pulses, 0 to 4294967295.
        """
    async def Motion_cfgAxisDirection_async(self, port: int, axis_dir: int) -> int:
        """Sets the direction of the motor and of its limits.

        Args:
            port: port of the drive, 0.
            axis_dir: 1 inverse, 0 not.
        """
    async def Motion_cfgLimit_async(self, port: int, en_forward: int, en_reverse: int, limit_polarity: int) -> int:
        """Configures the limit switches.

        Args:
            port: port of the drive, 0.
            en_forward: 1 on, 0 off.
            en_reverse: 1 on, 0 off.
            limit_polarity: 1 active high, 0 active low.
        """
    async def Motion_getParameters_async(self, port: int) -> int:
        """Reads the parameters into `TMC5240_default_dict`.

        Args:
            port: port of the drive, 0.
        """
    async def _Motion_sendAllConfiguration_async(self, port: int) -> int:
        """Sends directions and limits of the settings.

        Args:
            port: port of the drive, 0.
        """
    def _Motion_INI_convertIntToString(self, key: str, value: Any) -> Any:
        """Value of a setting as it stands in a file.

        Args:
            key: name of a setting.
            value: value of the setting.
        """
    def _Motion_INI_convertStringToInt(self, key: str, label: str) -> Any:
        """Value of a setting from its text.

        Args:
            key: name of a setting.
            label: text in the file.
        """
    async def Motion_openCfgFile_async(self, filename: str = "test.ini") -> int:
        """Chooses the settings file.

        Args:
            filename: name of a file that exists.
        """
    async def Motion_saveCfgFile_async(self) -> int:
        """Saves the settings of all axes to the opened file itself: its links and its owner stay."""
    async def Motion_loadCfgFile_async(self) -> int:
        """Loads the settings of all axes from the opened file, and sends them to connector 0 (compatibility note 26)."""

class DroneBased:
    """Limits and checks of a flight controller."""
    target_roll: int
    target_pitch: int
    target_yaw: int
    target_x: int
    target_y: int
    target_z: int
    roll_max_angle: int
    roll_min_angle: int
    roll_pitch_inposition_max_angle: int
    roll_pitch_inposition_min_angle: int
    yaw_inposition_max_angle: int
    yaw_inposition_min_angle: int
    z_max_position_NED: int
    z_min_position_NED: int
    x_inposition_position: float
    def _checkInputMode(self, mode: int) -> None:
        """Raises InputDataNotInRangeError unless `mode` is 0 or 1.

        Args:
            mode: 0 or 1.
        """
    def _checkFlightMode(self, mode: int) -> None:
        """Raises FlightModeNotAvaliableError unless `mode` is 0 or 1.

        Args:
            mode: 0 or 1.
        """
    def __init__(self) -> None:
        """Sets the limits."""
    def _checkHeightWithNED(self, height: float) -> None:
        """Raises HeightNotAvaliableError unless the height is within the limits. The moves do not call it.

        Args:
            height: z in metres; down is positive.
        """
    def _checkAngle(self, target: int, angle: float) -> None:
        """Raises AngleNotAvaliableError unless the angle is within the limits. The moves do not call it.

        Args:
            target: number of a target; x, y and z are not checked.
            angle: in degrees.
        """

class DroneModule(Packet, DroneBased):
    """A flight controller: status, modes and moves. It has a blocking form only."""
    current_posi_list: list[float]
    current_velo_list: list[float]
    current_acce_list: list[float]
    def __init__(self) -> None:
        """Sets the limits and empties the state."""
    def Drone_getFirmwareVersion(self, timeout: float = 3) -> str:
        """Reads the version of the firmware.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_getSerialNumber(self, timeout: float = 3) -> str:
        """Reads the serial number.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_readBattery(self, timeout: float = 3) -> list[float]:
        """Reads the battery.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_getFlightMode(self, timeout: float = 3) -> int:
        """Reads the flight mode.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_getActiveStatus(self, timeout: float = 3) -> int:
        """Reads whether it is active.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_getTakeOffStatus(self, timeout: float = 3) -> int:
        """Reads the state of the take-off.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_getLandingStatus(self, timeout: float = 3) -> int:
        """Reads the state of the landing.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_readInposition(self, timeout: float = 3) -> bytes:
        """Reads which targets are reached.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_readTaskControlMode(self, timeout: float = 3) -> int:
        """Reads what it is doing.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _Drone_readStatus(self, timeout: float = 3) -> int:
        """Reads the state of the device.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _Drone_getPositionVelociyAcceleration(self, timeout: float = 3) -> int:
        """Reads position, velocity and acceleration of one moment into the lists of the object, which are emptied before it asks.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def _Drone_setFlightMode(self, flight_mode: int, timeout: float = 3) -> int:
        """Sets the flight mode.

        Args:
            flight_mode: 0 attitude, 1 position.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_setAltitudeSensorMode(self, mode: int, timeout: float = 3) -> int:
        """Chooses the sensor of the altitude.

        Args:
            mode: 0 or 1.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Drone_setActiveStatus(self, active_status: int, timeout: float = 3) -> int:
        """Sets the active status.

        Args:
            active_status: 1 starts, 0 ends.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Drone_setTakeoffStatus(self, takeoff_status: int, timeout: float = 3) -> int:
        """Starts or ends a take-off.

        Args:
            takeoff_status: 1 starts, 0 ends.
            timeout: seconds in which the device must answer, above 0.
        """
    def _Drone_setLandingStatus(self, landing_status: int, timeout: float = 3) -> int:
        """Starts or ends a landing.

        Args:
            landing_status: 1 starts, 0 ends.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_stopMovement(self, timeout: float = 3) -> int:
        """Stops moving.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_setAttitudeMode(self, timeout: float = 3) -> int:
        """Chooses the attitude mode.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_setPositionMode(self, timeout: float = 3) -> int:
        """Chooses the position mode.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_activate(self, timeout: float = 3) -> int:
        """Makes it active.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_deactivate(self, timeout: float = 3) -> int:
        """Makes it inactive.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_startTakeOff(self, timeout: float = 3) -> int:
        """Takes off.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_abortTakeOff(self, timeout: float = 3) -> int:
        """Aborts a take-off.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_startLanding(self, timeout: float = 3) -> int:
        """Lands.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_abortLanding(self, timeout: float = 3) -> int:
        """Aborts a landing.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_getPositionWithNED(self, timeout: float = 3) -> list[float]:
        """Reads the position.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_getVelocityWithNED(self, timeout: float = 3) -> list[float]:
        """Reads the velocity.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_getAccelerationWithNED(self, timeout: float = 3) -> list[float]:
        """Reads the state; the acceleration is then in `current_acce_list` (compatibility note 23).

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_moveVehicleRelX(self, position: float, velocity: float, timeout: float = 3) -> int:
        """Moves forward by a distance.

        Args:
            position: in metres.
            velocity: in metres per second.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_moveVehicleRelY(self, position: float, velocity: float, timeout: float = 3) -> int:
        """Moves to its right by a distance.

        Args:
            position: in metres.
            velocity: in metres per second.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_moveVehicleRelXY(self, position_x: float, position_y: float, velocity_xy: float, timeout: float = 3) -> int:
        """Moves forward and to its right by distances.

        Args:
            position_x: in metres.
            position_y: in metres.
            velocity_xy: in metres per second.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_moveVehicleAbsRoll(self, position: float, velocity: float, timeout: float = 3) -> int:
        """Rolls to an angle.

        Args:
            position: in degrees.
            velocity: in degrees per second.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_moveVehicleAbsPitch(self, position: float, velocity: float, timeout: float = 3) -> int:
        """Pitches to an angle.

        Args:
            position: in degrees.
            velocity: in degrees per second.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_moveNedRelYaw(self, position: float, velocity: float, timeout: float = 3) -> int:
        """Turns by an angle.

        Args:
            position: in degrees.
            velocity: in degrees per second.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_moveNedRelX(self, position: float, velocity: float, timeout: float = 3) -> int:
        """Moves north by a distance.

        Args:
            position: in metres.
            velocity: in metres per second.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_moveNedRelY(self, position: float, velocity: float, timeout: float = 3) -> int:
        """Moves east by a distance.

        Args:
            position: in metres.
            velocity: in metres per second.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_moveNedRelZ(self, position: float, velocity: float, timeout: float = 3) -> int:
        """Moves down by a distance.

        Args:
            position: in metres.
            velocity: in metres per second.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_moveNedRelXY(self, position_x: float, position_y: float, velocity_xy: float, timeout: float = 3) -> int:
        """Moves north and east by distances.

        Args:
            position_x: in metres.
            position_y: in metres.
            velocity_xy: in metres per second.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_moveNedAbsYaw(self, position: float, velocity: float, timeout: float = 3) -> int:
        """Turns to an angle from north.

        Args:
            position: in degrees.
            velocity: in degrees per second.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_moveNedAbsX(self, position: float, velocity: float, timeout: float = 3) -> int:
        """Moves to an x, north being positive.

        Args:
            position: in metres.
            velocity: in metres per second.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_moveNedAbsY(self, position: float, velocity: float, timeout: float = 3) -> int:
        """Moves to a y, east being positive.

        Args:
            position: in metres.
            velocity: in metres per second.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_moveNedAbsZ(self, position: float, velocity: float, timeout: float = 3) -> int:
        """Moves to a z, down being positive.

        Args:
            position: in metres.
            velocity: in metres per second.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_moveNedAbsXY(self, position_x: float, position_y: float, velocity_xy: float, timeout: float = 3) -> int:
        """Moves to an x and a y.

        Args:
            position_x: in metres.
            position_y: in metres.
            velocity_xy: in metres per second.
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_readTrajectory(self, timeout: float = 3) -> list[float]:
        """Reads where the trajectory is.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """
    def Drone_readTrajectoryStatus(self, timeout: float = 3) -> bytes:
        """Reads whether the trajectory is done.

        Args:
            timeout: seconds in which the device must answer, above 0.
        """

class SableDio(USBDevice, DataLogger, SystemModule, UARTModule, I2CModule, SPIModule, DIOModule, PWMModule, CounterModule, EncoderModule, SystemModule_async, UARTModule_async, I2CModule_async, SPIModule_async, DIOModule_async, PWMModule_async, CounterModule_async, EncoderModule_async):
    """Sable-Dio: 26 channels of 3.3 V digital I/O."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class SableAnalog(USBDevice, DataLogger, SystemModule, UARTModule, I2CModule, SPIModule, AIModule, DIOModule, PWMModule, CounterModule, EncoderModule, SystemModule_async, UARTModule_async, I2CModule_async, SPIModule_async, AIModule_async, DIOModule_async, PWMModule_async, CounterModule_async, EncoderModule_async):
    """Sable-Analog: 20 digital channels, 8 analog inputs of 16 bits, 16 kHz."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class SableThermo(USBDevice, DataLogger, SystemModule, UARTModule, I2CModule, SPIModule, ThermocoupleModule, DIOModule, PWMModule, CounterModule, EncoderModule, SystemModule_async, UARTModule_async, I2CModule_async, SPIModule_async, ThermocoupleModule_async, DIOModule_async, PWMModule_async, CounterModule_async, EncoderModule_async):
    """Sable-Thermo: 21 digital channels, 2 thermocouple inputs."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class SableCan(USBDevice, DataLogger, SystemModule, UARTModule, I2CModule, SPIModule, CANModule, DIOModule, PWMModule, CounterModule, EncoderModule, SystemModule_async, UARTModule_async, I2CModule_async, SPIModule_async, CANModule_async, DIOModule_async, PWMModule_async, CounterModule_async, EncoderModule_async):
    """Sable-Can: 20 digital channels, CAN V2.0B."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class SableRtd(USBDevice, DataLogger, SystemModule, UARTModule, I2CModule, SPIModule, ThermalResistanceModule, DIOModule, PWMModule, CounterModule, EncoderModule, SystemModule_async, UARTModule_async, I2CModule_async, SPIModule_async, ThermalResistanceModule_async, DIOModule_async, PWMModule_async, CounterModule_async, EncoderModule_async):
    """Sable-Rtd: 21 digital channels, 2 RTD inputs."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class SableSink(USBDevice, DataLogger, SystemModule, DIOModule, PWMModule, CounterModule, EncoderModule, SystemModule_async, DIOModule_async, PWMModule_async, CounterModule_async, EncoderModule_async):
    """Sable-Sink: 24 V digital I/O, 14 inputs and 12 outputs."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class SableMixed(USBDevice, DataLogger, SystemModule, UARTModule, I2CModule, AIModule, AOStreamingModule, DIOModule, PWMModule, CounterModule, EncoderModule, SystemModule_async, UARTModule_async, I2CModule_async, AIModule_async, AOStreamingModule_async, DIOModule_async, PWMModule_async, CounterModule_async, EncoderModule_async):
    """Sable-Mixed: 16 digital channels, 8 analog inputs, 8 analog outputs."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class HeronAnalog(WifiDevice, DataLogger, SystemModule, SystemAnalogModule, NetworkModule, WifiModule, AIModule, SystemModule_async, SystemAnalogModule_async, NetworkModule_async, WifiModule_async, AIModule_async):
    """Heron-Analog: 8 analog inputs, 10 kHz."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """
    def connect(self, ip: str = "192.168.5.79", port1: int = 1336, port2: int = 7, verbose: bool = True) -> None:  # type: ignore[override]
        """Connects commands and data; does nothing if it is connected.

        Args:
            ip: IPv4 address or host name.
            port1: TCP port of the streamed data.
            port2: TCP port of the commands.
            verbose: whether to print a line.
        """
    def disconnect(self, verbose: bool = True) -> None:
        """Ends both connections; does nothing if there is none.

        Args:
            verbose: whether to print a line.
        """

class HeronImu(WifiDevice, DataLogger, SystemModule, SystemAnalogModule, NetworkModule, WifiModule, AIModule, AHRSModule, SDCardModule, SystemModule_async, SystemAnalogModule_async, NetworkModule_async, WifiModule_async, AIModule_async, AHRSModule_async, SDCardModule_async):  # type: ignore[misc]
    """Heron-Imu: 8 analog inputs, 10 kHz, and a 9-axis inertial sensor."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """
    def connect(self, ip: str = "192.168.5.79", port1: int = 1336, port2: int = 7, verbose: bool = True) -> None:  # type: ignore[override]
        """Connects commands and data; does nothing if it is connected.

        Args:
            ip: IPv4 address or host name.
            port1: TCP port of the streamed data.
            port2: TCP port of the commands.
            verbose: whether to print a line.
        """
    def disconnect(self, verbose: bool = True) -> None:
        """Ends both connections; does nothing if there is none.

        Args:
            verbose: whether to print a line.
        """

class HeronOut(WifiDevice, DataLogger, SystemModule, SystemAnalogModule, NetworkModule, WifiModule, AOModule, AHRSModule, SDCardModule, SystemModule_async, SystemAnalogModule_async, NetworkModule_async, WifiModule_async, AOModule_async, AHRSModule_async, SDCardModule_async):  # type: ignore[misc]
    """Heron-Out: 8 analog outputs and a 9-axis inertial sensor."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """
    def connect(self, ip: str = "192.168.5.79", port1: int = 1336, port2: int = 7, verbose: bool = True) -> None:  # type: ignore[override]
        """Connects commands and data; does nothing if it is connected.

        Args:
            ip: IPv4 address or host name.
            port1: TCP port of the streamed data.
            port2: TCP port of the commands.
            verbose: whether to print a line.
        """
    def disconnect(self, verbose: bool = True) -> None:
        """Ends both connections; does nothing if there is none.

        Args:
            verbose: whether to print a line.
        """

class HeronMixed(WifiDevice, DataLogger, SystemModule, SystemAnalogModule, NetworkModule, WifiModule, AIModule, AOModule, DIOModule, SDCardModule, SystemModule_async, SystemAnalogModule_async, NetworkModule_async, WifiModule_async, AIModule_async, AOModule_async, DIOModule_async, SDCardModule_async):
    """Heron-Mixed: Analog inputs and outputs, 8 digital inputs and 8 outputs."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """
    def connect(self, ip: str = "192.168.5.79", port1: int = 1336, port2: int = 7, verbose: bool = True) -> None:  # type: ignore[override]
        """Connects commands and data; does nothing if it is connected.

        Args:
            ip: IPv4 address or host name.
            port1: TCP port of the streamed data.
            port2: TCP port of the commands.
            verbose: whether to print a line.
        """
    def disconnect(self, verbose: bool = True) -> None:
        """Ends both connections; does nothing if there is none.

        Args:
            verbose: whether to print a line.
        """

class HeronFast(WifiDevice, DataLogger, SystemModule, SystemAnalogModule, NetworkModule, WifiModule, AIModule, SystemModule_async, SystemAnalogModule_async, NetworkModule_async, WifiModule_async, AIModule_async):
    """Heron-Fast: 8 analog inputs, 20 kHz."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """
    def connect(self, ip: str = "192.168.5.79", port1: int = 1336, port2: int = 7, verbose: bool = True) -> None:  # type: ignore[override]
        """Connects commands and data; does nothing if it is connected.

        Args:
            ip: IPv4 address or host name.
            port1: TCP port of the streamed data.
            port2: TCP port of the commands.
            verbose: whether to print a line.
        """
    def disconnect(self, verbose: bool = True) -> None:
        """Ends both connections; does nothing if there is none.

        Args:
            verbose: whether to print a line.
        """

class TarnAnalog(ETHDevice, DataLogger, SystemModule, NetworkModule, AIModule, SNTPModule, SystemModule_async, NetworkModule_async, AIModule_async, SNTPModule_async):
    """Tarn-Analog: 8 analog inputs, 16 bits, 20 kHz."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class TarnAnalog24(ETHDevice, DataLogger, SystemModule, NetworkModule, AI24BitStreamingModule, SNTPModule, SystemModule_async, NetworkModule_async, AI24BitStreamingModule_async, SNTPModule_async):
    """Tarn-Analog24: 8 analog inputs, 24 bits, 10 kHz."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class TarnDio(ETHDevice, DataLogger, SystemModule, NetworkModule, DIOModule, PWMModule, SNTPModule, SystemModule_async, NetworkModule_async, DIOModule_async, PWMModule_async, SNTPModule_async):
    """Tarn-Dio: 24 V digital I/O with PWM, 8 inputs and 6 outputs."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class TarnDioLite(ETHDevice, DataLogger, SystemModule, NetworkModule, DIOModule, SNTPModule, SystemModule_async, NetworkModule_async, DIOModule_async, SNTPModule_async):
    """Tarn-Dio-Lite: 24 V digital I/O, 16 inputs and 16 outputs."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class TarnCurrent(ETHDevice, DataLogger, SystemModule, NetworkModule, AI24BitModule, SNTPModule, SystemModule_async, NetworkModule_async, AI24BitModule_async, SNTPModule_async):
    """Tarn-Current: 8 current inputs."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class TarnCurrentVolt(ETHDevice, DataLogger, SystemModule, NetworkModule, AI24BitModule, SNTPModule, SystemModule_async, NetworkModule_async, AI24BitModule_async, SNTPModule_async):
    """Tarn-Current-Volt: 8 current inputs and 8 voltage inputs."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class TarnRelay(ETHDevice, DataLogger, SystemModule, NetworkModule, DIOModule, RelayModule, SNTPModule, SystemModule_async, NetworkModule_async, DIOModule_async, RelayModule_async, SNTPModule_async):
    """Tarn-Relay: 6 relays and 6 inputs."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class TarnOut(ETHDevice, DataLogger, SystemModule, NetworkModule, AOStreamingModule, SNTPModule, SystemModule_async, NetworkModule_async, AOStreamingModule_async, SNTPModule_async):
    """Tarn-Out: 8 analog outputs, function generation."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class TarnPot(ETHDevice, DataLogger, SystemModule, NetworkModule, DPOTModule, SNTPModule, SystemModule_async, NetworkModule_async, DPOTModule_async, SNTPModule_async):
    """Tarn-Pot: 4 variable resistors."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class TarnThermo(ETHDevice, DataLogger, SystemModule, NetworkModule, ThermocoupleModule, SNTPModule, SystemModule_async, NetworkModule_async, ThermocoupleModule_async, SNTPModule_async):
    """Tarn-Thermo: 7 thermocouple inputs."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class Lattice(ETHDevice, DataLogger, SystemModule, NetworkModule, AIModule, AOModule, DIOModule, MCX514Module, SystemModule_async, NetworkModule_async, AIModule_async, AOModule_async, DIOModule_async, MCX514Module_async):
    """Lattice: Chassis with four slots for exchangeable modules."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class Pawl(ETHDevice, SystemModule, NetworkModule, TMC5240Module, SNTPModule, SystemModule_async, NetworkModule_async, TMC5240Module_async, SNTPModule_async):
    """Pawl-Drive: Stepper drive."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class Ratchet(ETHDevice, DataLogger, SystemModule, MCX514Module, NetworkModule, SNTPModule, SystemModule_async, MCX514Module_async, NetworkModule_async, SNTPModule_async):
    """Ratchet: Motion controller."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class Drone(UARTDevice, DroneModule):
    """Drone: Flight controller on a serial line."""
    def __init__(self, verbose: bool = True) -> None:
        """Makes a handle and starts its threads.

        Args:
            verbose: whether to print a line.
        """
    def close(self, verbose: bool = True) -> None:
        """Closes connection, file and threads for good; a second call does nothing. Where there is a connection, its end is printed in any case (compatibility note 31).

        Args:
            verbose: whether to print a line.
        """

class LatticeLite(Lattice):
    """Lattice-Lite: The smaller chassis."""

class DeviceFinder(BroadcastDevice, BroadcastModule_async, BroadcastModule):
    """Device finder: Finds devices on the network and on USB."""
