#pragma once

/**
 * The module that hosts the sensors, on both ends of a call, and the events between it and the
 * robot; sensor/hosting/navigation_module.h lists arguments and results.
 */
namespace QV::NavigationContract {

inline constexpr char kModule[] = "QVNavigation";

inline constexpr char kSubscribe[] = "subscribe";
inline constexpr char kUnsubscribe[] = "unsubscribe";
inline constexpr char kSubscribeToAll[] = "subscribeToAll";
inline constexpr char kUnsubscribeFromAll[] = "unsubscribeFromAll";

inline constexpr char kGetMetricalData[] = "getMetricalData";
inline constexpr char kGetAllMetricalData[] = "getAllMetricalData";

inline constexpr char kEnableSensorOrFamily[] = "enableSensorOrFamily";
inline constexpr char kSetSensorDiagnosis[] = "setSensorDiagnosis";
inline constexpr char kLookAgain[] = "lookAgain";
inline constexpr char kSetSensorsDebug[] = "setSensorsDebug";
inline constexpr char kSetPose2D[] = "setPose2D";

inline constexpr char kGetFamilyNames[] = "getFamilyNames";
inline constexpr char kGetSensorList[] = "getSensorList";
inline constexpr char kGetAllSensorsByFamily[] = "getAllSensorsByFamily";
inline constexpr char kGetSensorsByFamily[] = "getSensorsByFamily";
inline constexpr char kGetSensorListBySubscriber[] = "getSensorListBySubscriber";
inline constexpr char kGetSubscribers[] = "getSubscribers";
inline constexpr char kGetEnabledSensorList[] = "getEnabledSensorList";

inline constexpr char kIsSensorStarted[] = "isSensorStarted";
inline constexpr char kIsSensorEnabled[] = "isSensorEnabled";
inline constexpr char kIsSensorDiagnosisSuccess[] = "isSensorDiagnosisSuccess";
inline constexpr char kIsSensorSubscribedBy[] = "isSensorSubscribedBy";
inline constexpr char kIsSensor[] = "isSensor";
inline constexpr char kIsFamily[] = "isFamily";
inline constexpr char kGetKindParameter[] = "getKindParameter";
inline constexpr char kLastTrouble[] = "lastTrouble";
inline constexpr char kGetHealth[] = "getHealth";

/** Raised by the robot: [[group, touched, [type, ...]], ...]; taken by the method below. */
inline constexpr char kTouchChangedEvent[] = "TouchChanged";
inline constexpr char kOnTouchChanged[] = "_onTouchChanged";
/**
 * Raised by the robot: [[s, us], [[id, distance (m), angle about y, about z (rad)], ...], _, _,
 * camera]; taken by the method below.
 */
inline constexpr char kPeopleDetectedEvent[] = "PeoplePerception/PeopleDetected";
inline constexpr char kOnPeopleDetected[] = "_onPeopleDetected";
/** Raised by blind zones: [sensor, [x, y, z] (m, ground frame), detected]. */
inline constexpr char kMotionDetectedEvent[] = "Navigation/MotionDetected";

}  // namespace QV::NavigationContract
