#pragma once

/// Small enumerations of the observation records.
namespace TYPE {

/// Frequency slot of an observation; 3 and more are invalid.
enum _enumFrequency : unsigned { FREQUENCY_L1 = 0, FREQUENCY_L2 = 1, FREQUENCY_THIRD = 2 };

/// What a value of a slot is measured on; 6 and more are invalid.
enum _enumCodePhaseType : unsigned {
    CODEPHASE_L1_CA = 0,
    CODEPHASE_L1_P = 1,
    CODEPHASE_L1_PHASE = 2,
    CODEPHASE_L2_CA = 3,
    CODEPHASE_L2_P = 4,
    CODEPHASE_L2_PHASE = 5,
};

/// Receiver type in the four low status bits of an epoch; 22 and more are invalid, 16 to 21 are kept as 2.
enum _enumSensorTypeID : unsigned {
    SENSOR_UNKNOWN = 0,
    SENSOR_GENERIC = 2,
    SENSOR_SIMULATED_FIRST = 5,
    SENSOR_SIMULATED_LAST = 7,
};

/// Coverage mode in two status bits of an epoch; 4 and more are invalid.
enum _enumCoverageMode : unsigned { COVERAGE_NONE = 0, COVERAGE_LOCAL = 1, COVERAGE_REGIONAL = 2, COVERAGE_GLOBAL = 3 };

}  // namespace TYPE
