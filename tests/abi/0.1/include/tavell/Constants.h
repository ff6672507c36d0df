/* Constants.h: every number of the interface by name, for C99 and C++.
 *
 * The enumerators are plain ints, so they pass straight to the operations, which all take and return int.
 */
#ifndef TAVELL_CONSTANTS_H
#define TAVELL_CONSTANTS_H

/** Kind of an element: IElement::GetType, property TAVELL_ELEMENT_MODE. */
enum TavellElementType {
    TAVELL_PIPE = 0,                /**< Darcy-Weisbach pipe, round or of hydraulic diameter 4 A / P */
    TAVELL_PUMP = 1,                /**< pump given by a curve of pressure rise over volume flow */
    TAVELL_LOSS = 2,                /**< loss given by a curve of pressure drop over volume flow */
    TAVELL_HAZEN_WILLIAMS_PIPE = 3, /**< pipe with a Hazen-Williams coefficient */
    TAVELL_ORIFICE = 4,             /**< orifice plate, Reader-Harris/Gallagher discharge coefficient */
    TAVELL_GENERAL_LOSS = 5,        /**< general power law, properties ck, a, b, c, d */
    TAVELL_KV_VALVE = 6,            /**< valve, Kv [m3/h at 1 bar] */
    TAVELL_CV_VALVE = 7,            /**< valve, Cv [US gal/min at 1 psi] */
    TAVELL_CONTROL_VALVE = 8,       /**< Darcy-Weisbach resistance that limits its mass flow */
    TAVELL_NON_RETURN = 9           /**< Darcy-Weisbach resistance that blocks reverse flow */
};

/** Type of a node: INode::GetType, property TAVELL_NODE_MODE. */
enum TavellNodeType {
    TAVELL_NODE_INLET = 0,    /**< boundary node; its constraint and its fluid temperature are used */
    TAVELL_NODE_INTERNAL = 1, /**< junction; a new node. Its constraint is not used by the solve */
    TAVELL_NODE_OUTLET = 2    /**< boundary node; its constraint is used */
};

/** Constraint of a node: INode::GetConstraint, property TAVELL_NODE_CONSTRAINT. */
enum TavellNodeConstraint {
    TAVELL_CONSTRAINT_PRESSURE = 0,         /**< static pressure [Pa], property TAVELL_NODE_PRESSURE */
    TAVELL_CONSTRAINT_MASS_FLOW = 1,        /**< mass flow [kg/s], property TAVELL_NODE_MASS_FLOW_RATE */
    TAVELL_CONSTRAINT_REYNOLDS = 2,         /**< Reynolds number [-], property TAVELL_NODE_REYNOLDS */
    TAVELL_CONSTRAINT_VELOCITY = 3,         /**< mean velocity [m/s], property TAVELL_NODE_VELOCITY */
    TAVELL_CONSTRAINT_PRESSURE_AND_FLOW = 4 /**< pressure and mass flow, both properties of kinds 0 and 1 */
};

/** Kind of an element's energy input, property TAVELL_ELEMENT_ENERGY_TYPE. */
enum TavellEnergyType {
    TAVELL_ENERGY_WALL = 0,             /**< convection to a wall at the element temperature */
    TAVELL_ENERGY_WALL_TEMPERATURE = 1, /**< convection to a wall; the value is its temperature [K] */
    TAVELL_ENERGY_FLUX = 2,             /**< the value is a heat flux [W/m2] over the wetted wall */
    TAVELL_ENERGY_RISE = 3,             /**< the value is a temperature rise [K] */
    TAVELL_ENERGY_FLUX_STORED = 4,      /**< as TAVELL_ENERGY_FLUX */
    TAVELL_ENERGY_HEAT = 5              /**< the value is a heat [W]; the wall temperature is computed */
};

/** Validity state: ICircuit::IsValid. States below 3 are suitable for analysis. The detail checks are made only
 *  when the environment variable TAVELL_DETAIL_CHECK is 1. */
enum TavellValidity {
    TAVELL_VALID = 0,                       /**< valid */
    TAVELL_VALID_INNER_BOUNDARY_VALUES = 1, /**< valid; a node that is no inlet carries a boundary value */
    TAVELL_VALID_HAS_RESULTS = 2,           /**< valid results of a solve are present */
    TAVELL_INVALID_CONSTRAINT = 3,          /**< a constraint outside 0..4, or without its value */
    TAVELL_INVALID_ELEMENT_COUNT = 4,       /**< fewer than 3 elements */
    TAVELL_INVALID_NODE_COUNT = 5,          /**< fewer than 4 nodes */
    TAVELL_INVALID_NO_INLET = 6,            /**< no node of type 0 */
    TAVELL_INVALID_NO_OUTLET = 7,           /**< no node of type 2 */
    TAVELL_INVALID_END_NODE = 8,            /**< an element's end names no node (detail check) */
    TAVELL_INVALID_NO_PRESSURE = 9,         /**< no node with a pressure constraint */
    TAVELL_INVALID_PRESSURE_AND_FLOW = 10,  /**< pressure-and-flow constraint with too few others */
    TAVELL_INVALID_DISCONNECTED = 11        /**< parts of the network are not connected (detail check) */
};

/** Result quantity: ICircuit::GetResults. Keys 0 to 5 are per element, 6 to 8 per node. */
enum TavellResultKey {
    TAVELL_RESULT_REYNOLDS = 0,            /**< Reynolds number [-], signed as the flow */
    TAVELL_RESULT_VELOCITY = 1,            /**< mean velocity [m/s], signed as the flow */
    TAVELL_RESULT_VOLUME_FLOW = 2,         /**< volume flow [m3/s], > 0 from start to end node */
    TAVELL_RESULT_MASS_FLOW = 3,           /**< mass flow [kg/s], > 0 from start to end node */
    TAVELL_RESULT_ELEMENT_TEMPERATURE = 4, /**< fluid temperature in the element [K] */
    TAVELL_RESULT_PRESSURE_DIFFERENCE = 5, /**< static pressure of the end node minus start node [Pa] */
    TAVELL_RESULT_NODE_TEMPERATURE = 6,    /**< fluid temperature at the node [K] */
    TAVELL_RESULT_PRESSURE = 7,            /**< static pressure at the node [Pa] */
    /** External mass flow that enters the circuit at the node [kg/s]: the supply (> 0) or demand (< 0) of a
     *  boundary node, the mass residual of an inner one. */
    TAVELL_RESULT_EXTERNAL_MASS_FLOW = 8
};

/** Friction-factor correlation, property TAVELL_CIRCUIT_FRICTION_FACTOR. */
enum TavellFrictionMethod {
    TAVELL_FRICTION_SWAMEE_JAIN = 0, /**< Swamee and Jain 1976; also 1 and every value not listed */
    TAVELL_FRICTION_COLEBROOK = 2,   /**< Colebrook 1939, iterated */
    TAVELL_FRICTION_HAALAND = 3,     /**< Haaland 1983 */
    TAVELL_FRICTION_SERGHIDES = 4,   /**< Serghides 1984 */
    TAVELL_FRICTION_ALTSHUL = 5,     /**< Altshul 1952 */
    TAVELL_FRICTION_EVANGELIDES = 6  /**< Evangelides, Papaevangelou and Tzimopoulos 2010 */
};

/** Property ids; the comment gives the unit. The name of an id is that of its enumerator in lower case without
 *  "tavell_", but for FLUID_CONDUCTIVITY, which is named "fluid_condunctivity", and the two curve texts, whose
 *  names begin with "__". */
enum TavellProperty {
    TAVELL_NO_PROPERTY = -1,

    TAVELL_ELEMENT_ID = 1000,
    TAVELL_ELEMENT_START = 1001,                     /**< id of the start node */
    TAVELL_ELEMENT_END = 1002,                       /**< id of the end node */
    TAVELL_ELEMENT_DIAMETER = 1003,                  /**< [m], inner or hydraulic diameter */
    TAVELL_ELEMENT_AREA = 1004,                      /**< [m2], flow cross-section */
    TAVELL_ELEMENT_ROUGHNESS = 1005,                 /**< [m], absolute */
    TAVELL_ELEMENT_TEMPERATURE = 1006,               /**< [K]; reads as the fluid's default temperature */
    TAVELL_ELEMENT_MODE = 1008,                      /**< TavellElementType */
    TAVELL_ELEMENT_REFERENCE_DENSITY = 1009,         /**< [kg/m3] of a pump's or loss's curve */
    TAVELL_ELEMENT_FLOW_RATE = 1010,                 /**< text: curve volume flows [m3/s] */
    TAVELL_ELEMENT_PRESSURE = 1011,                  /**< text: curve pressures [Pa] */
    TAVELL_ELEMENT_K_SPECIFIED = 1012,               /**< [-], minor loss coefficient K */
    TAVELL_ELEMENT_ENERGY_TYPE = 1013,               /**< TavellEnergyType */
    TAVELL_ELEMENT_ENERGY_VALUE = 1014,              /**< unit by energy type */
    TAVELL_ELEMENT_WETTEDPERIMETER = 1015,           /**< [m] */
    TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT = 1016, /**< C of the Hazen-Williams formula (SI) */
    TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER = 1017,     /**< [m] */
    TAVELL_ELEMENT_VALVE_KV_COEFFICIENT = 1018,      /**< Kv [m3/h at 1 bar] */
    TAVELL_ELEMENT_VALVE_CV_COEFFICIENT = 1019,      /**< Cv [US gal/min at 1 psi] */
    TAVELL_ELEMENT_GENERAL_LOSS_CK = 1020,           /**< dp/rho = rho^(a-1) ck L^b / D^c |Q|^d */
    TAVELL_ELEMENT_GENERAL_LOSS_A = 1021,
    TAVELL_ELEMENT_GENERAL_LOSS_B = 1022,
    TAVELL_ELEMENT_GENERAL_LOSS_C = 1023,
    TAVELL_ELEMENT_GENERAL_LOSS_D = 1024,
    TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW = 1025, /**< [kg/s], limit of a control valve */
    TAVELL_ELEMENT_FIXED_MASS_FLOW = 1026,         /**< [kg/s], fixed flow of a pump or loss; 0 is none */

    TAVELL_NODE_ID = 2000,
    TAVELL_NODE_X = 2001,                                 /**< [m] */
    TAVELL_NODE_Y = 2002,                                 /**< [m] */
    TAVELL_NODE_Z = 2003,                                 /**< [m] */
    TAVELL_NODE_MODE = 2004,                              /**< TavellNodeType */
    TAVELL_NODE_REYNOLDS = 2005,                          /**< [-] */
    TAVELL_NODE_PRESSURE = 2006,                          /**< [Pa], static */
    TAVELL_NODE_MASS_FLOW_RATE = 2007,                    /**< [kg/s], in the element's direction */
    TAVELL_NODE_VELOCITY = 2008,                          /**< [m/s], in the element's direction */
    TAVELL_NODE_FLUID_TEMPERATURE = 2009,                 /**< [K], of fluid that enters at an inlet */
    TAVELL_NODE_CONSTRAINT = 2010,                        /**< TavellNodeConstraint */
    TAVELL_NODE_PRESSURE_AND_FLOW_RATE_CONSTRAINT = 2011, /**< stored, read by no solve */

    TAVELL_CIRCUIT_GRAVITY_X = 3000, /**< direction of gravity, length 1 (0, 0, 0: none) */
    TAVELL_CIRCUIT_GRAVITY_Y = 3001,
    TAVELL_CIRCUIT_GRAVITY_Z = 3002,
    TAVELL_CIRCUIT_MINOR_LOSS = 3003,      /**< 0 specified K only, 1 computed junction losses unless a K is
                                           specified, other values computed K only, none where three flows meet */
    TAVELL_CIRCUIT_FRICTION_FACTOR = 3004, /**< TavellFrictionMethod */
    TAVELL_CIRCUIT_CALCULATE_VISCOSITY = 3005, /**< not 0: viscosity follows temperature */

    TAVELL_FLUID_DEFAULT_TEMPERATURE = 4000, /**< [K] */
    TAVELL_FLUID_DENSITY = 4001,             /**< [kg/m3] */
    TAVELL_FLUID_SPECIFIC_HEAT = 4002,       /**< [J/(kg K)] */
    TAVELL_FLUID_CONDUCTIVITY = 4003,        /**< [W/(m K)] */
    TAVELL_FLUID_VISCOSITY = 4004,           /**< [Pa s], dynamic */
    TAVELL_FLUID_VISCOSITY_COEFFICIENT_1 =
        4005, /**< c1 [Pa s] of mu = c1 exp((c2 - 273.15)/(T + c3 - 546.3)) */
    TAVELL_FLUID_VISCOSITY_COEFFICIENT_2 = 4006, /**< c2 [K] */
    TAVELL_FLUID_VISCOSITY_COEFFICIENT_3 = 4007  /**< c3 [K] */
};

/** Feedback id: IFeedback::GetId. "no." is a node or element number of the host. */
enum TavellFeedbackId {
    TAVELL_FEEDBACK_MASS_ERROR = 0,        /**< mass balance above the criterion: circuit, |relative error| */
    TAVELL_FEEDBACK_NODE_MISSING = 1,      /**< an element's end names no node: node no. */
    TAVELL_FEEDBACK_ELEMENT_MISSING = 2,   /**< an element is not defined: element no. */
    TAVELL_FEEDBACK_TEMPERATURE_ERROR = 3, /**< temperatures did not settle: circuit, relative error */
    TAVELL_FEEDBACK_MINOR_LOSS_ERROR = 4,  /**< minor losses did not settle: circuit, relative error */
    TAVELL_FEEDBACK_FLOW_UPDATE_ERROR = 5, /**< flow update count exceeded: circuit, error */
    TAVELL_FEEDBACK_PRESSURE_ERROR = 6,    /**< head-loss laws above the criterion: circuit, relative error */
    TAVELL_FEEDBACK_ITERATION_LIMIT = 7,   /**< iteration limit reached: circuit */
    TAVELL_FEEDBACK_TEMPERATURE_NO_PRESSURE = 8, /**< fixed temperature without fixed pressure: node no. */
    TAVELL_FEEDBACK_CONTRADICTING_ELEMENT =
        9, /**< element against the circuit's direction: element no., 2 node nos */
    TAVELL_FEEDBACK_RESERVED_10 = 10,
    TAVELL_FEEDBACK_RESERVED_11 = 11,
    TAVELL_FEEDBACK_PRESSURE_SOLUTION = 12, /**< pressure solution failed: reason */
    TAVELL_FEEDBACK_NO_INTERNAL_NODES = 13, /**< no node with an unknown pressure */
    TAVELL_FEEDBACK_CURVE_ERROR = 14, /**< unusable curve: element no., start and end node nos, inlet no. */
    TAVELL_FEEDBACK_RESERVED_15 = 15,
    TAVELL_FEEDBACK_UNBALANCED_PART = 16, /**< a part without a pressure has a net inflow: node no., kg/s */
    TAVELL_FEEDBACK_PART_WITHOUT_PRESSURE =
        17,                              /**< a part's pressure was held at its starting value: node no. */
    TAVELL_FEEDBACK_PART_CLOSED_BY = 18, /**< element of zero flow that bounds that part: element no. */
    TAVELL_FEEDBACK_PART_FED_BY = 19,    /**< element of fixed flow that bounds that part: element no. */
    TAVELL_FEEDBACK_RESERVED_20 = 20,
    TAVELL_FEEDBACK_CANCELLED = 21 /**< the cancellation callback asked to stop */
};

#endif
